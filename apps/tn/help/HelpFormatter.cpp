#include "apps/tn/help/HelpFormatter.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "apps/tn/base/Terminal.h"

namespace
{
constexpr std::size_t kNames = 30;     // characters of the column of names
constexpr std::size_t kCommands = 12;  // of that of commands
constexpr std::size_t kNarrowest = 60; // less than that helps nobody

struct TypeRow
{
   const char* itsType; // CLI11's
   const char* itsText;
};
constexpr TypeRow kTypes[] = {
    {"TEXT", "TEXT"}, {"INT", "N"}, {"UINT", "N"}, {"FLOAT", "N"}, {"ENUM", "TEXT"},
};

std::string Choices(const std::string& theList)
{
   std::string aText;
   std::istringstream aStream(theList);
   for (std::string aChoice; std::getline(aStream, aChoice, ',');)
   {
      aText += (aText.empty() ? "" : "|") + aChoice.substr(0, aChoice.find("->"));
   }
   return aText;
}

// What stands between the first theBegin and the next theEnd; empty when there are none.
std::string Between(const std::string& theText, char theBegin, char theEnd)
{
   const std::size_t aBegin = theText.find(theBegin);
   const std::size_t anEnd = theText.find(theEnd, aBegin == std::string::npos ? 0 : aBegin);
   return aBegin == std::string::npos || anEnd == std::string::npos ? ""
                                                                    : theText.substr(aBegin + 1, anEnd - aBegin - 1);
}
} // namespace

std::string HelpFormatter::SimplifyType(const std::string& theType)
{
   if (const std::string aList = Between(theType, '{', '}'); !aList.empty())
   {
      return Choices(aList);
   }
   const std::size_t aColon = theType.find(':');
   const std::string aName = theType.substr(0, aColon);
   const std::string aCheck = aColon == std::string::npos ? "" : theType.substr(aColon + 1);
   const auto aRow = std::find_if(std::begin(kTypes), std::end(kTypes),
                                  [&](const TypeRow& theRow) { return aName == theRow.itsType; });
   if (aRow == std::end(kTypes))
   {
      return aName;
   }
   if (aCheck == "FILE" || aCheck == "DIR")
   {
      return aCheck;
   }
   std::string aRange = Between(aCheck, '[', ']');
   aRange.erase(std::remove(aRange.begin(), aRange.end(), ' '), aRange.end());
   return aRange.empty() ? aRow->itsText : aRange;
}

HelpFormatter::HelpFormatter()
{
   const std::size_t aTerminal = TerminalWidth(STDOUT_FILENO);
   itsWidth = aTerminal == 0 ? kWidest : std::clamp(aTerminal, kNarrowest, kWidest);
   label("SUBCOMMAND", "COMMAND");
   label("REQUIRED", "(required)");
}

std::string HelpFormatter::make_option_opts(const CLI::Option* theOption) const
{
   std::string aText = CLI::Formatter::make_option_opts(theOption);
   const std::string aType = theOption->get_type_name();
   if (const std::size_t aPlace = aText.find(aType); !aType.empty() && aPlace != std::string::npos)
   {
      const std::string aName = SimplifyType(aType);
      // What stands for itself needs no type: "FILE... (required)".
      const bool isNamed = theOption->get_positional() && aName == "TEXT";
      aText.replace(aPlace, aType.size(), isNamed ? "" : aName);
      aText.erase(0, isNamed ? aText.find_first_not_of(' ') : 0);
      aText.insert(0, isNamed && !aText.starts_with("...") ? " " : "");
   }
   // What an option excludes or needs is told to who gets it wrong.
   aText.resize(std::min({aText.size(), aText.find(" Excludes:"), aText.find(" Needs:")}));
   return aText;
}

std::string HelpFormatter::make_subcommand(const CLI::App* theCommand) const
{
   std::ostringstream aText;
   CLI::detail::format_help(aText, theCommand->get_name(), Description(theCommand->get_description(), kCommands),
                            kCommands);
   return aText.str();
}

// CLI11 leaves two lines between groups.
std::string HelpFormatter::make_help(const CLI::App* theProgram, std::string theName, CLI::AppFormatMode theMode) const
{
   std::string aText = CLI::Formatter::make_help(theProgram, std::move(theName), theMode);
   for (std::size_t aPlace = 0; (aPlace = aText.find("\n\n\n", aPlace)) != std::string::npos;)
   {
      aText.erase(aPlace, 1);
   }
   return aText;
}

std::string HelpFormatter::make_subcommands(const CLI::App* theProgram, CLI::AppFormatMode theMode) const
{
   constexpr std::string_view kHeading = "Subcommands:"; // CLI11 calls the group so
   std::string aText = CLI::Formatter::make_subcommands(theProgram, theMode);
   if (const std::size_t aPlace = aText.find(kHeading); aPlace != std::string::npos)
   {
      aText.replace(aPlace, kHeading.size(), "Commands:");
   }
   return aText;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* theOption) const
{
   return Description(theOption->get_description(), kNames);
}

// What stands behind theColumn characters.
std::string HelpFormatter::Description(const std::string& theText, std::size_t theColumn) const
{
   std::string aText = Filled(theText, itsWidth - theColumn);
   aText.erase(aText.find_last_not_of('\n') + 1);
   return aText;
}

std::string HelpFormatter::make_footer(const CLI::App* theProgram) const
{
   return Filled(theProgram->get_footer(), itsWidth);
}

std::string HelpFormatter::Filled(const std::string& theText, std::size_t theWidth)
{
   std::string aText;
   std::istringstream aLines(theText);
   std::size_t aColumn = 0; // 0 where a line begins
   for (std::string aLine; std::getline(aLines, aLine);)
   {
      if (aLine.empty() || aLine.front() == ' ')
      {
         aText += (aColumn != 0 ? "\n" : "") + aLine + "\n";
         aColumn = 0;
         continue;
      }
      std::istringstream aWords(aLine);
      for (std::string aWord; aWords >> aWord;)
      {
         const bool isFull = aColumn != 0 && aColumn + 1 + aWord.size() > theWidth;
         aText += (aColumn == 0 ? "" : isFull ? "\n" : " ") + aWord;
         aColumn = (isFull || aColumn == 0 ? 0 : aColumn + 1) + aWord.size();
      }
   }
   return aText + (aColumn != 0 ? "\n" : "");
}
