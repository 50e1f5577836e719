#include "talvenor/dictionary/MUIDDictionary.h"

#include <fstream>

#include "talvenor/dictionary/DictionaryLine.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
constexpr std::size_t kExpectedEntries = 2048; // those of PS3.6 annex A fit without growing

MUIDDictionaryEntry ParseLine(const RWCString& theLine, unsigned int theNumber)
{
   try
   {
      return MUIDDictionaryEntry(theLine);
   }
   catch (const InvalidEntryDescriptionException&)
   {
      // No blank before the number: the text is older than the one for attributes, and hosts may compare with it.
      const RWCString aText =
          "Invalid UID dictionary entry description at line" + std::to_string(theNumber) + ": " + theLine;
      throw InvalidEntryDescriptionException(aText.c_str(), "", 0);
   }
}

[[noreturn]] void ThrowDuplicate(const char* theField, const RWCString& theWhere)
{
   const RWCString aText = "Invalid UID dictionary entry (duplicate " + RWCString(theField) + ")" + theWhere;
   throw InvalidEntryDescriptionException(aText.c_str(), "", 0);
}
} // namespace

MUIDDictionary::MUIDDictionary() = default;

MUIDDictionary::MUIDDictionary(std::istream& theStream)
{
   Load(theStream);
}

MUIDDictionary::MUIDDictionary(const MUIDDictionary& theOther)
{
   theOther.ForEach([this](const MUIDDictionaryEntry& theEntry) { Add(theEntry); });
}

MUIDDictionary& MUIDDictionary::operator=(const MUIDDictionary& theOther)
{
   if (this != &theOther)
   {
      Unload();
      theOther.ForEach([this](const MUIDDictionaryEntry& theEntry) { Add(theEntry); });
   }
   return *this;
}

MUIDDictionary::~MUIDDictionary() = default;

bool MUIDDictionary::Load(const RWCString& theFileName)
{
   std::ifstream aStream;
   return OpenDictionaryFile(theFileName, aStream) && Load(aStream);
}

bool MUIDDictionary::Load(std::istream& theStream)
{
   Unload();
   DictionaryLineReader aReader(theStream);
   std::string_view aLine;
   RWCString aText; // one buffer for all lines
   while (aReader.Next(aLine))
   {
      if (!IsSkippedDictionaryLine(aLine))
      {
         aText = aLine;
         Insert(ParseLine(aText, aReader.Number()), aReader.Number());
      }
   }
   return !aReader.Failed();
}

void MUIDDictionary::Unload()
{
   itsByMnemonic.Clear();
   itsByUID.Clear();
   itsEntries.clear();
}

void MUIDDictionary::Add(MUIDDictionaryEntry* theEntry)
{
   const std::unique_ptr<MUIDDictionaryEntry> anEntry(theEntry);
   if (anEntry != nullptr)
   {
      Insert(std::move(*anEntry), 0);
   }
}

void MUIDDictionary::Add(const MUIDDictionaryEntry& theEntry)
{
   Insert(MUIDDictionaryEntry(theEntry), 0);
}

void MUIDDictionary::Insert(MUIDDictionaryEntry&& theEntry, unsigned int theLine)
{
   const auto aWhere = [theLine] { return theLine != 0 ? " at line" + std::to_string(theLine) : RWCString(); };
   const UINT32 aMnemonicHash = itsByMnemonic.HashOf(theEntry.GetMnemonic());
   const UINT32 aUIDHash = itsByUID.HashOf(theEntry.GetUID());
   if (itsByMnemonic.Find(theEntry.GetMnemonic(), aMnemonicHash) != nullptr)
   {
      ThrowDuplicate("Mnemonic", aWhere());
   }
   if (itsByUID.Find(theEntry.GetUID(), aUIDHash) != nullptr)
   {
      ThrowDuplicate("UID", aWhere());
   }
   if (itsEntries.empty())
   {
      itsByMnemonic.Reserve(kExpectedEntries);
      itsByUID.Reserve(kExpectedEntries);
   }
   MUIDDictionaryEntry& anEntry = itsEntries.emplace_back(std::move(theEntry));
   itsByMnemonic.Insert(aMnemonicHash, &anEntry);
   itsByUID.Insert(aUIDHash, &anEntry);
}

bool MUIDDictionary::SetDefaultUIDDictionary(const RWCString& theFileName)
{
   return itsDefaultUIDDictionary.Load(theFileName);
}

bool MUIDDictionary::SetDefaultUIDDictionary(std::istream& theStream)
{
   return itsDefaultUIDDictionary.Load(theStream);
}
