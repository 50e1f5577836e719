// Makes UIDs (PS3.5 9): root, random number, local date and time, and a count within the second.
//
//    2.25.339282991848464000405290.3021948577.20261122214005.1
//
// Time and count are shared by all factories of the process, so two factories with one root never make the same UID;
// the random part keeps processes and hosts apart. A second has 65536 UIDs, then the call waits for the next one. When
// the clock was set back, the last time used is kept and counted on. Any thread may call.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/Mutex.h"

class TALVENOR_API MUIDFactory
{
public:
   // Building a factory seeds the random numbers of all factories anew.
   MUIDFactory(); // with the default root
   explicit MUIDFactory(const RWCString& theRoot);
   MUIDFactory(const MUIDFactory&) = delete;
   MUIDFactory& operator=(const MUIDFactory&) = delete;

   // A new UID; empty when the root is empty or the UID would have more than 64 characters. A root of up to 32
   // characters always leaves room.
   RWCString GetUID();

   // Without the dot behind it.
   RWCString GetRoot() const;
   void SetRoot(const RWCString& theRoot);

   // The root of factories built without one from now on; first that of LibraryIdentity.h.
   static RWCString GetDefaultRoot();
   static void SetDefaultRoot(const RWCString& theRoot);

   // The factory of the process, built at the first call. It has the library's own root until SetRoot gives it another.
   static MUIDFactory& GetInstance();

protected:
   static UINT32 GetStartupSeed(); // from the host's address and the clocks; odd
   static UINT32 GetRandomNumber();

private:
   static void Seed();

   static Mutex itsMutex; // guards the roots and everything shared

   RWCString itsRoot;
};
