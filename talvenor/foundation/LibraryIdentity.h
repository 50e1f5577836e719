// What the library says of itself in files and associations (PS3.7 D.3.3.2, PS3.10 7.1). These values are found in
// stored objects and stay as they are.
#pragma once

// Root of the UIDs that MUIDFactory makes. It was derived from a UUID (PS3.5 B.2) whose upper 48 bits are zero, which
// leaves room for the generated parts within the 64 characters of a UID. Hosts with a registered root of their own set
// that with MUIDFactory::SetDefaultRoot.
inline constexpr char kDefaultUIDRoot[] = "2.25.339282991848464000405290";

inline constexpr char kImplementationClassUID[] = "2.25.339282991848464000405290.1";
inline constexpr char kImplementationVersionName[] = "TALVENOR_1_0"; // at most 16 characters
