#include "talvenor/dictionary/MDataDictionary.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "talvenor/dictionary/DictionaryLine.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
constexpr std::string_view kPrivateCreatorKeyword = "PrivateCreator";
constexpr UINT16 kMaximumPrivateElement = 0xFF; // elements of a private dictionary are offsets within a block

[[noreturn]] void ThrowAtLine(const char* theFault, unsigned int theNumber, std::string_view theLine)
{
   const RWCString aText = theFault + std::to_string(theNumber) + ": " + RWCString(theLine);
   throw InvalidEntryDescriptionException(aText.c_str(), "", 0);
}

[[noreturn]] void ThrowReadFailed(const RWCString& theDictionary)
{
   throw InvalidEntryDescriptionException((theDictionary + "::Load(): stream read failed").c_str(), "", 0);
}

bool IsBlank(char theCharacter)
{
   return theCharacter == ' ' || theCharacter == '\t';
}

// `PrivateCreator = text`: the text, without the blanks before it and the spaces behind it.
bool ParsePrivateCreator(std::string_view theLine, RWCString& theCreator)
{
   if (!theLine.starts_with(kPrivateCreatorKeyword))
   {
      return false;
   }
   std::string_view aRest = theLine.substr(kPrivateCreatorKeyword.size());
   const auto aDropBlanks = [&aRest] {
      aRest.remove_prefix(
          static_cast<std::size_t>(std::find_if_not(aRest.begin(), aRest.end(), IsBlank) - aRest.begin()));
   };
   aDropBlanks();
   if (aRest.empty() || aRest.front() != '=')
   {
      return false;
   }
   aRest.remove_prefix(1);
   aDropBlanks();
   theCreator = aRest.substr(0, aRest.find_last_not_of(' ') + 1);
   return true;
}
} // namespace

MDataDictionary::MDataDictionary(std::size_t theBuckets) : itsBuckets(std::max<std::size_t>(theBuckets, 2)) {}

MDataDictionary::MDataDictionary(const RWCString& theFileName, std::size_t theBuckets) : MDataDictionary(theBuckets)
{
   if (!Load(theFileName))
   {
      ThrowReadFailed("MDataDictionary(\"" + theFileName + "\")");
   }
}

MDataDictionary::MDataDictionary(std::istream& theStream, std::size_t theBuckets) : MDataDictionary(theBuckets)
{
   if (!Load(theStream))
   {
      ThrowReadFailed("MDataDictionary(istream&)");
   }
}

MDataDictionary::MDataDictionary(TagHash, std::size_t theBuckets) : MDataDictionary(theBuckets) {}

MDataDictionary::MDataDictionary(TagHash, const RWCString& theFileName, std::size_t theBuckets)
    : MDataDictionary(theFileName, theBuckets)
{}

MDataDictionary::MDataDictionary(TagHash, std::istream& theStream, std::size_t theBuckets)
    : MDataDictionary(theStream, theBuckets)
{}

MDataDictionary::MDataDictionary(const MDataDictionary& theOther) : itsBuckets(theOther.itsBuckets)
{
   CopyFrom(theOther);
}

MDataDictionary& MDataDictionary::operator=(const MDataDictionary& theOther)
{
   if (this != &theOther)
   {
      Unload();
      CopyFrom(theOther);
   }
   return *this;
}

MDataDictionary::~MDataDictionary() = default;

void MDataDictionary::CopyFrom(const MDataDictionary& theOther)
{
   itsBuckets = std::max(theOther.itsBuckets, theOther.Size());
   theOther.ForEach([this](const MDDEntry& theEntry) { Add(theEntry); });
   itsPrivateCreatorID = theOther.itsPrivateCreatorID;
   itsPrivateBlockGroup = theOther.itsPrivateBlockGroup;
}

const MDDEntry* MDataDictionary::Find(const MAttributeTag& theTag) const
{
   UINT32 aTag = theTag.GetTag();
   const UINT32 aHighByte = aTag >> 24;
   if (aHighByte == 0x50 || aHighByte == 0x60) // curves and overlays are listed once (PS3.5 7.6)
   {
      aTag &= 0xFF00FFFF;
   }
   return FindListed(aTag);
}

const MDDEntry* MDataDictionary::Find(std::string_view theName) const
{
   return itsByName.Find(theName);
}

bool MDataDictionary::Load(const RWCString& theFileName)
{
   std::ifstream aStream;
   return OpenDictionaryFile(theFileName, aStream) && Load(aStream);
}

bool MDataDictionary::Load(std::istream& theStream)
{
   Unload();
   DictionaryLineReader aReader(theStream);
   std::string_view aLine;
   while (aReader.Next(aLine))
   {
      LoadLine(aLine, aReader.Number());
   }
   return !aReader.Failed();
}

void MDataDictionary::LoadLine(std::string_view theLine, unsigned int theNumber)
{
   if (IsSkippedDictionaryLine(theLine) || ParsePrivateCreator(theLine, itsPrivateCreatorID))
   {
      return;
   }
   MDDEntry::Fields aFields;
   if (!MDDEntry::Parse(theLine, aFields))
   {
      ThrowAtLine("Invalid data dictionary entry description at line ", theNumber, theLine);
   }
   if (!MDDEntry::ValueTypeOK(aFields.itsType))
   {
      throw InvalidValueTypeException(static_cast<UINT32>(aFields.itsType), nullptr, 0);
   }
   const UINT32 aNameHash = itsByName.HashOf(aFields.itsName);
   if (Holds(MAttributeTag(aFields.itsGroup, aFields.itsElement).GetTag(), aFields.itsName, aNameHash))
   {
      ThrowAtLine("Duplicate data dictionary entry description at line ", theNumber, theLine);
   }
   CheckPrivateBlock(aFields, theLine, theNumber);
   Index(itsLoaded.emplace_back(aFields), aNameHash);
}

void MDataDictionary::CheckPrivateBlock(const MDDEntry::Fields& theFields, std::string_view theLine,
                                        unsigned int theNumber)
{
   if (itsPrivateCreatorID.empty())
   {
      return;
   }
   if (itsPrivateBlockGroup != -1 && itsPrivateBlockGroup != theFields.itsGroup)
   {
      ThrowAtLine("Attempt to change private block group code at line ", theNumber, theLine);
   }
   if (theFields.itsElement > kMaximumPrivateElement)
   {
      ThrowAtLine("Invalid private element code (> 255) at line ", theNumber, theLine);
   }
   itsPrivateBlockGroup = theFields.itsGroup;
}

void MDataDictionary::Unload()
{
   itsByTag.Clear();
   itsByName.Clear();
   itsLoaded.clear();
   itsAdded.clear();
   itsPrivateCreatorID.clear();
   itsPrivateBlockGroup = -1;
}

void MDataDictionary::Add(MDDEntry* theEntry)
{
   if (theEntry == nullptr)
   {
      return;
   }
   const UINT32 aNameHash = itsByName.HashOf(theEntry->Name());
   if (!Holds(theEntry->GetTag(), theEntry->Name(), aNameHash))
   {
      itsAdded.emplace_back(theEntry);
      Index(*theEntry, aNameHash);
   }
}

void MDataDictionary::Add(const MDDEntry& theEntry)
{
   const UINT32 aNameHash = itsByName.HashOf(theEntry.Name());
   if (!Holds(theEntry.GetTag(), theEntry.Name(), aNameHash))
   {
      Index(itsLoaded.emplace_back(theEntry), aNameHash);
   }
}

bool MDataDictionary::Holds(UINT32 theTag, std::string_view theName, UINT32 theNameHash) const
{
   return FindListed(theTag) != nullptr || itsByName.Find(theName, theNameHash) != nullptr;
}

void MDataDictionary::Index(MDDEntry& theEntry, UINT32 theNameHash)
{
   if (Size() == 0)
   {
      itsByTag.Reserve(itsBuckets);
      itsByName.Reserve(itsBuckets);
   }
   itsByTag.Insert(itsByTag.HashOf(theEntry.GetTag()), &theEntry);
   itsByName.Insert(theNameHash, &theEntry);
}

UINT16 MDataDictionary::RunTimeClass(UINT16 theGroup, UINT16 theElement, char* theBuffer, std::size_t theSize) const
{
   const MDDEntry* anEntry = Find(MAttributeTag(theGroup, theElement));
   const std::string_view aText = anEntry != nullptr ? std::string_view(anEntry->Description()) : "Unknown";
   if (theBuffer != nullptr && theSize > 0)
   {
      const std::size_t aCount = std::min(aText.size(), theSize - 1);
      std::memcpy(theBuffer, aText.data(), aCount);
      theBuffer[aCount] = '\0';
   }
   return anEntry != nullptr ? anEntry->GetTypeAsUshort() : VRCode::UN;
}

bool MDataDictionary::SetDefaultDataDictionary(const RWCString& theFileName)
{
   return itsDefaultDataDictionary.Load(theFileName);
}

bool MDataDictionary::SetDefaultDataDictionary(std::istream& theStream)
{
   return itsDefaultDataDictionary.Load(theStream);
}
