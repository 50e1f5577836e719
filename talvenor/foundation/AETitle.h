// AETitle: the name of an application entity (PS3.5 6.2 AE, PS3.8 9.3.2), kept as the 16 characters of the wire: no
// leading spaces, padded with trailing ones. Comparison is case-sensitive. Longer texts are cut; a text ends at its
// first NUL. A title of 16 spaces is null. Values are free of sharing; the default title is set at start-up, before
// other threads use it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "talvenor/Export.h"

class PDUInputStream;
class PDUOutputStream;

class TALVENOR_API AETitle
{
public:
   static constexpr unsigned int itsLength = 16;

   AETitle() { Assign(std::string_view()); }
   AETitle(const std::string& theTitle) { Set(theTitle); }
   AETitle(const char* theTitle) { Set(theTitle); } // null: 16 spaces

   void Set(const char* theTitle);
   void Set(const std::string& theTitle);
   void Set(const AETitle& theTitle) { *this = theTitle; }

   // Without leading and trailing spaces.
   std::string GetTitle() const;
   unsigned int GetSize() const { return itsLength; }
   unsigned int length() const { return itsLength; }
   // The 16 padded characters and a NUL.
   operator const char*() const { return itsCharacters.data(); }
   bool IsNull() const;

   bool operator==(const AETitle& theOther) const = default;
   bool operator==(const char* theTitle) const; // null is equal to nothing

   // 16 bytes. Read returns 0 and sets the title to spaces when fewer arrive; both are defined with the PDU streams.
   int Read(PDUInputStream& theStream);
   int Write(PDUOutputStream& theStream) const;

   // What a file or an association names as its source when the host gives no title. Empty at load.
   static const std::string& GetDefaultAETitle() { return itsDefaultAETitle; }
   static void SetDefaultAETitle(const std::string& theTitle) { itsDefaultAETitle = theTitle; }

   static std::string itsDefaultAETitle;

private:
   void Assign(std::string_view theTitle);

   std::array<char, itsLength + 1> itsCharacters;
};
