#include "talvenor/association/CheckedPDU_Service.h"

#include <algorithm>
#include <fstream>
#include <string_view>

#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{

constexpr std::size_t kMaximumLineLength = 254;
constexpr std::size_t kMaximumFieldLength = 63;
constexpr std::string_view kSeparators = "\t\n\r "; // the CR of a file that was written elsewhere

void Log(const RWCString& theWhere, const RWCString& theWhat)
{
   LogEntry anEntry(gTNErrorLog, LogStream::WarningSeverity);
   anEntry << "CheckedPDU_Service::InitializeFrom(): " << OnOneLine(theWhere) << ": " << OnOneLine(theWhat) << "\n";
}

char Lower(char theCharacter)
{
   return theCharacter >= 'A' && theCharacter <= 'Z' ? static_cast<char>(theCharacter - 'A' + 'a') : theCharacter;
}

bool IsSameKeyword(std::string_view theOne, std::string_view theOther)
{
   return std::equal(theOne.begin(), theOne.end(), theOther.begin(), theOther.end(),
                     [](char a, char b) { return Lower(a) == Lower(b); });
}

// Takes the next field off the front of theLine; empty at its end.
RWCString NextField(std::string_view& theLine, const RWCString& theWhere)
{
   theLine.remove_prefix(std::min(theLine.find_first_not_of(kSeparators), theLine.size()));
   const std::string_view aField = theLine.substr(0, theLine.find_first_of(kSeparators));
   theLine.remove_prefix(aField.size());
   if (aField.size() > kMaximumFieldLength)
   {
      Log(theWhere, "field cut to 63 characters: " + RWCString(aField));
   }
   return RWCString(aField.substr(0, kMaximumFieldLength));
}

} // namespace

const CheckedPDU_Service::Keyword CheckedPDU_Service::kKeywords[] = {
    {"RemoteAE", RemoteAETitles}, {"LocalAE", LocalAETitles},     {"sop", SOPClasses},
    {"abstract", SOPClasses},     {"transfer", TransferSyntaxes}, {"Application", ApplicationContexts},
};

CheckedPDU_Service::CheckedPDU_Service(DULStreamFactory& theFactory, const char* thePath) : PDU_Service(theFactory)
{
   InitializeFrom(thePath);
}

CheckedPDU_Service::~CheckedPDU_Service() = default;

void CheckedPDU_Service::ReleaseMemory()
{
   itsLists = {};
}

int CheckedPDU_Service::InitializeFrom(const char* thePath)
{
   ReleaseMemory();
   if (thePath == nullptr)
   {
      return 0;
   }
   std::ifstream aFile(thePath);
   RWCString aLine;
   for (unsigned int aNumber = 1; std::getline(aFile, aLine); ++aNumber)
   {
      ReadLine(aLine, RWCString(thePath) + ", line " + std::to_string(aNumber));
   }
   if (!aFile.is_open() || aFile.bad())
   {
      Log(thePath, "the file cannot be read");
      return 0;
   }
   return 1;
}

void CheckedPDU_Service::ReadLine(const RWCString& theLine, const RWCString& theWhere)
{
   std::string_view aLine = theLine;
   if (aLine.starts_with('#') || aLine.find_first_not_of(kSeparators) == std::string_view::npos)
   {
      return;
   }
   if (aLine.size() > kMaximumLineLength)
   {
      Log(theWhere, "line cut to 254 characters");
      aLine = aLine.substr(0, kMaximumLineLength);
   }
   const RWCString aLabel = NextField(aLine, theWhere);
   const RWCString aValue = NextField(aLine, theWhere);
   const RWCString aKeyword = NextField(aLine, theWhere);
   const auto aRow = std::find_if(std::begin(kKeywords), std::end(kKeywords), [&](const Keyword& theKeyword) {
      return IsSameKeyword(theKeyword.itsText, aKeyword);
   });
   if (aRow == std::end(kKeywords))
   {
      Log(theWhere, "line ignored, unknown keyword \"" + aKeyword + "\"");
      return;
   }
   itsLists[aRow->itsKind].push_back({aLabel, aValue});
}

// A list that has no entry does not restrict.
template <class Predicate>
int CheckedPDU_Service::Accepts(Kind theKind, Predicate theMatch) const
{
   const RWTValOrderedVector<Entry>& aList = itsLists[theKind];
   return aList.empty() ||
          std::any_of(aList.begin(), aList.end(), [&](const Entry& theEntry) { return theMatch(theEntry.itsValue); });
}

int CheckedPDU_Service::CanYouHandleTransferSyntax(const TransferSyntaxItem& theSyntax)
{
   return Accepts(TransferSyntaxes, [&](const RWCString& theValue) { return theSyntax.GetUID() == theValue; });
}

int CheckedPDU_Service::ShouldIAcceptRemoteAppTitle(const RWCString& theTitle)
{
   return Accepts(RemoteAETitles, [&](const RWCString& theValue) { return AETitle(theTitle) == AETitle(theValue); });
}

int CheckedPDU_Service::ShouldIAcceptLocalAppTitle(const RWCString& theTitle)
{
   return Accepts(LocalAETitles, [&](const RWCString& theValue) { return AETitle(theTitle) == AETitle(theValue); });
}

int CheckedPDU_Service::ShouldIAcceptApplicationContext(const ApplicationContextItem& theContext)
{
   return Accepts(ApplicationContexts, [&](const RWCString& theValue) { return theContext.GetName() == theValue; });
}

int CheckedPDU_Service::ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                                    unsigned char& theSCURole)
{
   if (itsLists[SOPClasses].empty())
   {
      return 1;
   }
   const bool hasRole = theSCPRole != 0 || theSCURole != 0;
   return hasRole && Accepts(SOPClasses, [&](const RWCString& theValue) { return theSyntax.GetName() == theValue; });
}
