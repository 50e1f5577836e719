// Composes the bytes of DICOM files and datasets (PS3.5 7.1, PS3.10 7.1), whole ones and broken ones: every length can
// be stated to be what it is not.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

enum class Encoding
{
   Implicit,  // little endian
   Explicit,  // little endian
   BigEndian, // explicit
   Compressed // JPEG baseline: explicit, little endian
};

inline const char* TransferSyntaxOf(Encoding theEncoding)
{
   switch (theEncoding)
   {
   case Encoding::Implicit: return "1.2.840.10008.1.2";
   case Encoding::Explicit: return "1.2.840.10008.1.2.1";
   case Encoding::BigEndian: return "1.2.840.10008.1.2.2";
   default: return "1.2.840.10008.1.2.4.50";
   }
}

class DatasetBytes
{
public:
   static constexpr UINT32 kUndefined = 0xFFFFFFFF;
   static constexpr UINT32 kItem = 0xFFFEE000;
   static constexpr UINT32 kItemEnd = 0xFFFEE00D;
   static constexpr UINT32 kSequenceEnd = 0xFFFEE0DD;

   explicit DatasetBytes(Encoding theEncoding = Encoding::Explicit) : itsEncoding(theEncoding) {}

   // An element with its value as it is: no padding.
   DatasetBytes& Element(UINT32 theTag, std::string_view theType, std::string_view theValue)
   {
      return Stated(theTag, theType, static_cast<UINT32>(theValue.size()), theValue);
   }

   // An element (of any group: an item or a delimiter has no type) that states a length and has theValue.
   DatasetBytes& Stated(UINT32 theTag, std::string_view theType, UINT32 theLength, std::string_view theValue = {})
   {
      Number(theTag >> 16, 2).Number(theTag & 0xFFFF, 2);
      if (itsEncoding == Encoding::Implicit || theTag >> 16 == 0xFFFE)
      {
         Number(theLength, 4);
      }
      else if (IsLong(theType))
      {
         Raw(theType).Number(0, 2).Number(theLength, 4);
      }
      else
      {
         Raw(theType).Number(theLength, 2);
      }
      return Raw(theValue);
   }

   DatasetBytes& Sequence(UINT32 theTag, UINT32 theLength = kUndefined) { return Stated(theTag, "SQ", theLength); }
   DatasetBytes& Item(UINT32 theLength = kUndefined, std::string_view theContent = {})
   {
      return Stated(kItem, "", theLength, theContent);
   }
   DatasetBytes& ItemEnd() { return Stated(kItemEnd, "", 0); }
   DatasetBytes& SequenceEnd() { return Stated(kSequenceEnd, "", 0); }

   // The next theCount bytes of a number in the byte order of the encoding.
   DatasetBytes& Number(UINT32 theNumber, unsigned int theCount)
   {
      for (unsigned int i = 0; i < theCount; ++i)
      {
         const unsigned int aPlace = itsEncoding == Encoding::BigEndian ? theCount - 1 - i : i;
         itsBytes += static_cast<char>(theNumber >> 8 * aPlace);
      }
      return *this;
   }

   DatasetBytes& Raw(std::string_view theBytes)
   {
      itsBytes += theBytes;
      return *this;
   }

   // Notes that what is here so far is a dataset that is whole.
   DatasetBytes& Whole()
   {
      itsWholeAt.push_back(itsBytes.size());
      return *this;
   }

   const std::string& Bytes() const { return itsBytes; }
   const std::vector<std::size_t>& WholeAt() const { return itsWholeAt; }
   std::size_t Size() const { return itsBytes.size(); }

   // A file with the dataset in it.
   std::string File() const { return Header(TransferSyntaxOf(itsEncoding)) + itsBytes; }

   // Preamble and meta information for a transfer syntax.
   static std::string Header(std::string_view theTransferSyntax)
   {
      DatasetBytes aMeta;
      std::string aUID(theTransferSyntax);
      aUID.resize((aUID.size() + 1) & ~std::size_t{1});
      aMeta.Element(0x00020010, "UI", aUID);
      return Header(aMeta.Bytes(), static_cast<UINT32>(aMeta.Size()));
   }

   // With any meta elements after the group length, which says theGroupLength.
   static std::string Header(std::string_view theMetaElements, UINT32 theGroupLength)
   {
      DatasetBytes aGroupLength;
      aGroupLength.Stated(0x00020000, "UL", 4).Number(theGroupLength, 4);
      return std::string(128, '\0') + "DICM" + aGroupLength.Bytes() + std::string(theMetaElements);
   }

private:
   static bool IsLong(std::string_view theType)
   {
      for (const char* const aLong : {"OB", "OF", "OW", "SQ", "UN", "UT"})
      {
         if (theType == aLong)
         {
            return true;
         }
      }
      return false;
   }

   Encoding itsEncoding;
   std::string itsBytes;
   std::vector<std::size_t> itsWholeAt;
};
