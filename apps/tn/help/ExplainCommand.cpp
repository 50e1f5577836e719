#include "apps/tn/help/ExplainCommand.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <utility>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/network/StatusText.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
struct Representation
{
   const char* itsCode;
   const char* itsText;
};

// PS3.5 6.2.
constexpr Representation kRepresentations[] = {
    {"AE", "Application Entity: a title of up to 16 characters"},
    {"AS", "Age String: nnnD, nnnW, nnnM or nnnY"},
    {"AT", "Attribute Tag: 4 bytes"},
    {"CS", "Code String: up to 16 characters of A-Z, 0-9, space and underscore"},
    {"DA", "Date: YYYYMMDD"},
    {"DS", "Decimal String: a number as text of up to 16 characters"},
    {"DT", "Date Time: YYYYMMDDHHMMSS.FFFFFF&ZZXX, cut from the right"},
    {"FL", "Floating Point Single: 4 bytes"},
    {"FD", "Floating Point Double: 8 bytes"},
    {"IS", "Integer String: -2147483648 to 2147483647 as text of up to 12 characters"},
    {"LO", "Long String: up to 64 characters"},
    {"LT", "Long Text: one value of up to 10240 characters"},
    {"OB", "Other Byte: bytes, of which only the attribute knows the meaning"},
    {"OD", "Other Double: words of 8 bytes, floating point"},
    {"OF", "Other Float: words of 4 bytes, floating point"},
    {"OL", "Other Long: words of 4 bytes"},
    {"OV", "Other 64-bit Very Long: words of 8 bytes"},
    {"OW", "Other Word: words of 2 bytes"},
    {"PN", "Person Name: family^given^middle^prefix^suffix, up to 64 characters in each of up to 3 component groups"},
    {"SH", "Short String: up to 16 characters"},
    {"SL", "Signed Long: 4 bytes"},
    {"SQ", "Sequence of Items: datasets within the dataset"},
    {"SS", "Signed Short: 2 bytes"},
    {"ST", "Short Text: one value of up to 1024 characters"},
    {"SV", "Signed 64-bit Very Long: 8 bytes"},
    {"TM", "Time: HHMMSS.FFFFFF, cut from the right"},
    {"UC", "Unlimited Characters"},
    {"UI", "Unique Identifier: up to 64 characters of 0-9 and full stop, padded with NUL"},
    {"UL", "Unsigned Long: 4 bytes"},
    {"UN", "Unknown: bytes whose representation was not known when they were encoded"},
    {"UR", "Universal Resource Identifier: one value"},
    {"US", "Unsigned Short: 2 bytes"},
    {"UT", "Unlimited Text: one value"},
    {"UV", "Unsigned 64-bit Very Long: 8 bytes"},
};

// What is said about a word: to people, and the same as the members of a JSON object.
struct Answer
{
   std::string itsText;
   std::vector<std::pair<const char*, std::string>> itsMembers;
};

const char* KindOf(MUIDDictionaryEntry::UIDType theType)
{
   switch (theType)
   {
   case MUIDDictionaryEntry::TS: return "transfer syntax";
   case MUIDDictionaryEntry::SC: return "SOP class";
   case MUIDDictionaryEntry::MC: return "meta SOP class";
   case MUIDDictionaryEntry::SI: return "well-known SOP instance";
   case MUIDDictionaryEntry::AC: return "application context";
   default: return "";
   }
}

std::optional<Answer> ExplainRepresentation(const std::string& theWord)
{
   const auto aRow = std::find_if(std::begin(kRepresentations), std::end(kRepresentations),
                                  [&](const Representation& theRow) { return theWord == theRow.itsCode; });
   if (aRow == std::end(kRepresentations))
   {
      return std::nullopt;
   }
   return Answer{theWord + "  " + aRow->itsText, {{"vr", theWord}, {"description", aRow->itsText}}};
}

std::optional<Answer> ExplainUID(const std::string& theWord)
{
   const MUIDDictionary& aDictionary = MUIDDictionary::GetDefaultUIDDictionary();
   const MUIDDictionaryEntry* anEntry = aDictionary.FindUID(std::string_view(theWord));
   anEntry = anEntry != nullptr ? anEntry : aDictionary.FindMnemonic(theWord);
   if (anEntry == nullptr)
   {
      return std::nullopt;
   }
   const std::string aKind = KindOf(anEntry->GetType());
   Answer anAnswer{anEntry->GetUID() + "  " + anEntry->GetMnemonic() + "  " + anEntry->GetDescription(),
                   {{"uid", anEntry->GetUID()},
                    {"keyword", anEntry->GetMnemonic()},
                    {"description", anEntry->GetDescription()},
                    {"type", aKind}}};
   std::string aRemark = aKind;
   if (anEntry->GetType() == MUIDDictionaryEntry::TS)
   {
      const bool isServed =
          TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(anEntry->GetUID()) != nullptr;
      aRemark += isServed ? ", read and written here" : ", not served here";
      anAnswer.itsMembers.emplace_back("served", isServed ? "yes" : "no");
   }
   anAnswer.itsText += aRemark.empty() ? "" : "  (" + aRemark + ")";
   return anAnswer;
}

// Hexadecimal digits without what people write around them, and the first of a repeating group for all of it (60xx,3000);
// empty for anything else.
std::string DigitsOf(const std::string& theWord)
{
   std::string aDigits;
   for (const char aCharacter : theWord)
   {
      if (std::isxdigit(static_cast<unsigned char>(aCharacter)))
      {
         aDigits += aCharacter;
      }
      else if (aCharacter == 'x' || aCharacter == 'X')
      {
         aDigits += '0';
      }
      else if (std::string_view("(),").find(aCharacter) == std::string_view::npos)
      {
         return "";
      }
   }
   return aDigits;
}

std::string MultiplicityOf(const MDDEntry& theEntry)
{
   const std::string aLeast = std::to_string(theEntry.VMMin());
   if (theEntry.VMMin() == theEntry.VMMax())
   {
      return aLeast;
   }
   return aLeast + "-" + (theEntry.VMMax() == 0xFFFFFFFF ? "n" : std::to_string(theEntry.VMMax()));
}

std::string TypeText(const MDDEntry& theEntry)
{
   const UINT16 aCode = theEntry.GetTypeAsUshort();
   return aCode != 0 ? std::string{static_cast<char>(aCode >> 8), static_cast<char>(aCode)} : "";
}

// gggg,eeee of (gggg,eeee).
std::string Bare(const std::string& theTag)
{
   return theTag.substr(1, theTag.size() - 2);
}

// By keyword, or by number where it is one.
std::optional<Answer> ExplainTag(const std::string& theWord)
{
   const MDataDictionary& aDictionary = MDataDictionary::GetDefaultDataDictionary();
   const MDDEntry* anEntry = aDictionary.Find(std::string_view(theWord));
   if (const std::string aDigits = DigitsOf(theWord); anEntry == nullptr && aDigits.size() == 8)
   {
      const auto aTag = static_cast<UINT32>(std::strtoul(aDigits.c_str(), nullptr, 16));
      anEntry = aDictionary.Find(MAttributeTag(GroupOf(aTag), ElementOf(aTag)));
      if (anEntry == nullptr && GroupOf(aTag) % 2 == 1)
      {
         const std::string aText = "private: what it means depends on the private creator in the file";
         return Answer{TagText(aTag) + "  " + aText, {{"tag", Bare(TagText(aTag))}, {"description", aText}}};
      }
   }
   if (anEntry == nullptr)
   {
      return std::nullopt;
   }
   const std::string aTag = TagText(anEntry->GetTag());
   const std::string aType = TypeText(*anEntry);
   const std::string aMultiplicity = MultiplicityOf(*anEntry);
   return Answer{aTag + "  " + anEntry->Name() + "  " + (aType.empty() ? "no VR" : aType) + "  " + aMultiplicity +
                     "  " + anEntry->Description(),
                 {{"tag", Bare(aTag)},
                  {"keyword", anEntry->Name()},
                  {"vr", aType},
                  {"vm", aMultiplicity},
                  {"description", anEntry->Description()}}};
}

std::optional<Answer> ExplainStatus(const std::string& theWord)
{
   std::string aDigits = theWord;
   if (aDigits.starts_with("0x") || aDigits.starts_with("0X"))
   {
      aDigits.erase(0, 2);
   }
   else if (aDigits.ends_with("H") || aDigits.ends_with("h"))
   {
      aDigits.pop_back();
   }
   if (aDigits.size() != 4 || DigitsOf(aDigits) != aDigits)
   {
      return std::nullopt;
   }
   const auto aStatus = static_cast<UINT16>(std::strtoul(aDigits.c_str(), nullptr, 16));
   if (!IsListedStatus(aStatus))
   {
      return std::nullopt;
   }
   const std::string aStore = DescribeStatus(StatusService::Storage, aStatus);
   const std::string aFind = DescribeStatus(StatusService::Find, aStatus);
   const std::string aMove = DescribeStatus(StatusService::Move, aStatus);
   const std::string anyOther = DescribeStatus(StatusService::Any, aStatus);
   const bool isOne = aStore == anyOther && aFind == anyOther && aMove == anyOther;
   return Answer{
       isOne ? "any service  " + anyOther
             : "C-STORE  " + aStore + "\nC-FIND   " + aFind + "\nC-MOVE   " + aMove + "\nothers   " + anyOther,
       {{"status", aDigits}, {"C-STORE", aStore}, {"C-FIND", aFind}, {"C-MOVE", aMove}, {"others", anyOther}}};
}

// Keywords are names without their blanks: CT Image Storage is CTImageStorage.
std::optional<Answer> Explain(const std::string& theWord)
{
   std::string aWord = theWord;
   std::erase(aWord, ' ');
   for (const auto anExplain : {ExplainRepresentation, ExplainUID, ExplainTag, ExplainStatus})
   {
      if (std::optional<Answer> anAnswer = anExplain(aWord))
      {
         return anAnswer;
      }
   }
   return std::nullopt;
}

void WriteJson(const std::string& theWord, const Answer& theAnswer)
{
   JsonWriter aJson(std::cout);
   aJson.BeginObject();
   aJson.Text("word", theWord);
   for (const auto& [aName, aText] : theAnswer.itsMembers)
   {
      aJson.Text(aName, aText);
   }
   aJson.EndObject();
   std::cout << "\n";
}
} // namespace

ExplainCommand::ExplainCommand(CLI::App& theProgram)
    : Command(theProgram, "explain", "Tell what a UID, a tag, a status or a value representation is")
{
   itsOptions
       .add_option("WORD", itsWords, "A UID, gggg,eeee, a keyword, a status such as A700, two letters such as PN")
       ->required();
   itsOptions.add_flag("--json", itsIsJson, "One JSON object a line for each word that is known");
   itsOptions.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   itsOptions.footer("Exit codes: 0 all known, 1 some not, 2 wrong use, 3 no dictionaries.\n\n"
                     "Example:\n  tn explain 1.2.840.10008.1.2.4.70 0028,0301 StudyDate A700 PN");
}

int ExplainCommand::Run()
{
   try
   {
      LoadDictionaries(itsData);
   }
   catch (const std::exception& anError)
   {
      std::cerr << "tn explain: " << anError.what() << "\n";
      return ExitCode::kCouldNotRead;
   }
   int aResult = ExitCode::kDone;
   for (const std::string& aWord : itsWords)
   {
      if (const std::optional<Answer> anAnswer = Explain(aWord); !anAnswer)
      {
         std::cout.flush();
         std::cerr << OnOneLine("tn explain: " + aWord +
                                ": not known as UID, tag (gggg,eeee), keyword (PatientName), status (four "
                                "hexadecimal digits) or VR; capitals count")
                   << "\n";
         aResult = ExitCode::kSomeFailed;
      }
      else if (itsIsJson)
      {
         WriteJson(aWord, *anAnswer);
      }
      else
      {
         std::cout << anAnswer->itsText << "\n";
      }
   }
   std::cout.flush();
   return std::cout ? aResult : ExitCode::kCouldNotWrite;
}
