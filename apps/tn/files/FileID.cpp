#include "apps/tn/files/FileID.h"

#include <algorithm>

namespace
{
constexpr std::size_t kMostComponents = 8;
constexpr std::size_t kLongestComponent = 8;

bool IsAllowed(char theCharacter)
{
   return (theCharacter >= 'A' && theCharacter <= 'Z') || (theCharacter >= '0' && theCharacter <= '9') ||
          theCharacter == '_';
}

// Empty and dotted names walk the tree; a slash hides further components, a colon a drive, a NUL the end of the name.
bool IsUnsafe(const std::string& theComponent)
{
   const auto isControl = [](unsigned char theByte) { return theByte < 0x20 || theByte == 0x7F; };
   return theComponent.empty() || theComponent == "." || theComponent == ".." ||
          theComponent.find_first_of("/\\:") != std::string::npos ||
          std::any_of(theComponent.begin(), theComponent.end(), isControl);
}
} // namespace

FileID SplitFileID(const std::string& theText, char theSeparator)
{
   FileID aFileID;
   if (theText.empty())
   {
      return aFileID;
   }
   std::size_t aStart = 0;
   std::size_t anEnd;
   while ((anEnd = theText.find(theSeparator, aStart)) != std::string::npos)
   {
      aFileID.push_back(theText.substr(aStart, anEnd - aStart));
      aStart = anEnd + 1;
   }
   aFileID.push_back(theText.substr(aStart));
   return aFileID;
}

std::string JoinFileID(const FileID& theFileID, char theSeparator)
{
   std::string aText;
   for (const std::string& aComponent : theFileID)
   {
      aText += (&aComponent != theFileID.data() ? std::string(1, theSeparator) : "") + aComponent;
   }
   return aText;
}

std::string FaultOfFileID(const FileID& theFileID, bool theAnyNames)
{
   if (theFileID.size() > kMostComponents)
   {
      return "its path has " + std::to_string(theFileID.size()) + " components, more than 8";
   }
   for (const std::string& aComponent : theFileID)
   {
      if (IsUnsafe(aComponent) || aComponent.front() == ' ' || aComponent.back() == ' ')
      {
         return "\"" + aComponent + "\" cannot be written in a directory";
      }
      if (!theAnyNames &&
          (aComponent.size() > kLongestComponent || !std::all_of(aComponent.begin(), aComponent.end(), IsAllowed)))
      {
         return "\"" + aComponent + "\" is not 1 to 8 characters of A-Z, 0-9 and _, as on media (see --any-names)";
      }
   }
   return "";
}

bool LeavesTheMedium(const FileID& theFileID)
{
   return theFileID.empty() || theFileID.size() > kMostComponents ||
          std::any_of(theFileID.begin(), theFileID.end(), IsUnsafe);
}
