#include "talvenor/dictionary/DictionaryLine.h"

#include <filesystem>
#include <fstream>
#include <istream>

namespace
{
constexpr std::size_t kBlockSize = 65536; // bytes asked from the stream at a time

bool IsBlank(char theCharacter)
{
   return theCharacter == ' ' || theCharacter == '\t';
}

void DropLeadingBlanks(std::string_view& theText)
{
   while (!theText.empty() && IsBlank(theText.front()))
   {
      theText.remove_prefix(1);
   }
}

// Trailing blanks go first: those inside the quotes belong to the text.
std::string_view WithoutBlanksAndQuotes(std::string_view theText)
{
   while (!theText.empty() && IsBlank(theText.back()))
   {
      theText.remove_suffix(1);
   }
   if (theText.size() >= 2 && theText.front() == '"' && theText.back() == '"')
   {
      theText = theText.substr(1, theText.size() - 2);
   }
   return theText;
}

// The place of the comma behind a field in quotes, or npos when the text does not begin with such a field.
std::size_t CommaAfterQuotes(std::string_view theText)
{
   if (theText.empty() || theText.front() != '"')
   {
      return std::string_view::npos;
   }
   std::size_t aPlace = theText.find('"', 1);
   if (aPlace == std::string_view::npos)
   {
      return aPlace;
   }
   do
   {
      ++aPlace;
   } while (aPlace < theText.size() && IsBlank(theText[aPlace]));
   return aPlace < theText.size() && theText[aPlace] == ',' ? aPlace : std::string_view::npos;
}
} // namespace

bool DictionaryLine::Field(std::string_view& theField)
{
   DropLeadingBlanks(itsRest);
   std::size_t aComma = CommaAfterQuotes(itsRest);
   if (aComma == std::string_view::npos)
   {
      aComma = itsRest.find(',');
   }
   if (aComma == std::string_view::npos || aComma == 0)
   {
      return false;
   }
   theField = WithoutBlanksAndQuotes(itsRest.substr(0, aComma));
   itsRest.remove_prefix(aComma + 1);
   return true;
}

std::string_view DictionaryLine::LastField()
{
   DropLeadingBlanks(itsRest);
   return WithoutBlanksAndQuotes(itsRest);
}

DictionaryLineReader::DictionaryLineReader(std::istream& theStream) : itsStream(theStream) {}

bool DictionaryLineReader::Next(std::string_view& theLine)
{
   std::size_t anEnd = std::string::npos;
   std::size_t aSearched = 0; // bytes of the line already seen to hold no line feed
   for (;;)
   {
      anEnd = itsBuffer.find('\n', itsPosition + aSearched);
      aSearched = itsBuffer.size() - itsPosition;
      if (anEnd != std::string::npos || !Fill())
      {
         break;
      }
   }
   const bool hasEnd = anEnd != std::string::npos;
   if (!hasEnd && itsPosition == itsBuffer.size())
   {
      return false;
   }

   theLine = std::string_view(itsBuffer).substr(itsPosition, hasEnd ? anEnd - itsPosition : aSearched);
   itsPosition += theLine.size() + (hasEnd ? 1 : 0);
   ++itsNumber;
   if (!theLine.empty() && theLine.back() == '\r')
   {
      theLine.remove_suffix(1);
   }
   DropLeadingBlanks(theLine);
   return true;
}

// Moves what is left to the front of the buffer and adds a block. False when the stream has no more.
bool DictionaryLineReader::Fill()
{
   itsBuffer.erase(0, itsPosition);
   itsPosition = 0;
   const std::size_t aKept = itsBuffer.size();
   itsBuffer.resize(aKept + kBlockSize);
   itsStream.read(itsBuffer.data() + aKept, kBlockSize);
   const std::size_t aCount = static_cast<std::size_t>(itsStream.gcount());
   itsBuffer.resize(aKept + aCount);
   return aCount > 0;
}

bool DictionaryLineReader::Failed() const
{
   return itsStream.bad();
}

bool IsSkippedDictionaryLine(std::string_view theLine)
{
   return theLine.empty() || theLine.starts_with("//");
}

bool OpenDictionaryFile(const std::string& theFileName, std::ifstream& theStream)
{
   std::error_code anError;
   // A folder can be opened like a file; only reading it fails, and by then the dictionary would be empty.
   if (theFileName.empty() || std::filesystem::is_directory(theFileName, anError))
   {
      return false;
   }
   theStream.open(theFileName, std::ios::in | std::ios::binary);
   return theStream.is_open();
}
