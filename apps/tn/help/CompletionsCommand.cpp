#include "apps/tn/help/CompletionsCommand.h"

#include <iostream>
#include <sstream>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tn/base/ExitCode.h"

namespace
{
// An option of a command as shells see it.
struct Completion
{
   std::vector<std::string> itsNames; // with their dashes
   std::string itsDescription;        // one line
   bool itsHasValue;
   std::vector<std::string> itsChoices; // of the value, where there are few
};

std::string FirstLine(const std::string& theText)
{
   return theText.substr(0, theText.find_first_of(";\n"));
}

// The checks of an option tell its choices in the name of its type: "TEXT:{implicit,explicit}", "ENUM:value in
// {file->1,none->0} OR {1,0}".
std::vector<std::string> FindChoices(const std::string& theType)
{
   std::vector<std::string> aChoices;
   const std::size_t aBegin = theType.find('{');
   const std::size_t anEnd = theType.find('}');
   if (aBegin < anEnd && anEnd != std::string::npos)
   {
      std::istringstream aList(theType.substr(aBegin + 1, anEnd - aBegin - 1));
      for (std::string aChoice; std::getline(aList, aChoice, ',');)
      {
         aChoices.push_back(aChoice.substr(0, aChoice.find("->")));
      }
   }
   return aChoices;
}

std::vector<Completion> FindOptions(const CLI::App& theCommand)
{
   std::vector<Completion> anOptions;
   for (const CLI::Option* anOption : theCommand.get_options())
   {
      Completion aCompletion{{}, FirstLine(anOption->get_description()), anOption->get_expected_max() != 0, {}};
      for (const std::string& aName : anOption->get_snames())
      {
         aCompletion.itsNames.push_back("-" + aName);
      }
      for (const std::string& aName : anOption->get_lnames())
      {
         aCompletion.itsNames.push_back("--" + aName);
      }
      aCompletion.itsChoices = FindChoices(anOption->get_type_name());
      if (!aCompletion.itsNames.empty())
      {
         anOptions.push_back(std::move(aCompletion));
      }
   }
   return anOptions;
}

// Those that --help lists.
std::vector<const CLI::App*> FindCommands(const CLI::App& theCommand)
{
   return theCommand.get_subcommands(
       [](const CLI::App* theOne) { return !theOne->get_name().empty() && !theOne->get_group().empty(); });
}

std::string Join(const std::vector<std::string>& theWords)
{
   std::string aText;
   for (const std::string& aWord : theWords)
   {
      aText += (aText.empty() ? "" : " ") + aWord;
   }
   return aText;
}

std::string JoinNames(const CLI::App& theCommand)
{
   std::vector<std::string> aNames;
   for (const CLI::App* aCommand : FindCommands(theCommand))
   {
      aNames.push_back(aCommand->get_name());
   }
   return Join(aNames);
}

// The text with a backslash before each of theSpecial.
std::string Escape(const std::string& theText, const char* theSpecial)
{
   std::string aText;
   for (const char aCharacter : theText)
   {
      aText += std::string(std::string_view(theSpecial).find(aCharacter) != std::string_view::npos, '\\') + aCharacter;
   }
   return aText;
}

// The visitor is called for each command, outer ones first, with its full name: "" for the program, "dicomdir list".
template <class Visitor>
void VisitCommands(const CLI::App& theCommand, const std::string& theName, Visitor theVisitor)
{
   theVisitor(theCommand, theName);
   for (const CLI::App* aCommand : FindCommands(theCommand))
   {
      VisitCommands(*aCommand, theName + (theName.empty() ? "" : " ") + aCommand->get_name(), theVisitor);
   }
}

void WriteBash(const CLI::App& theProgram)
{
   std::cout << "# bash completion for tn\n_tn() {\n"
                "   local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= word\n"
                "   COMPREPLY=()\n"
                "   # --level=image comes as three words\n"
                "   if [[ $cur == = ]]; then cur=; elif [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD-2]}; fi\n"
                "   for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
                "      case \"$command $word\" in\n";
   VisitCommands(theProgram, "", [](const CLI::App& theCommand, const std::string& theName) {
      if (const std::size_t aSpace = theName.rfind(' '); !theName.empty())
      {
         const std::string anOuter = aSpace == std::string::npos ? "" : theName.substr(0, aSpace);
         std::cout << "         \"" << anOuter << " " << theCommand.get_name() << "\") command='" << theName
                   << "' ;;\n";
      }
   });
   std::cout << "      esac\n   done\n   case \"$command|$prev\" in\n";
   VisitCommands(theProgram, "", [](const CLI::App& theCommand, const std::string& theName) {
      for (const Completion& anOption : FindOptions(theCommand))
      {
         if (anOption.itsHasValue)
         {
            for (const std::string& aName : anOption.itsNames)
            {
               std::cout << "      '" << theName << "|" << aName << "') COMPREPLY=($(compgen -W '"
                         << Join(anOption.itsChoices) << "' -- \"$cur\")); return ;;\n";
            }
         }
      }
   });
   std::cout << "   esac\n   case \"$command\" in\n";
   VisitCommands(theProgram, "", [](const CLI::App& theCommand, const std::string& theName) {
      std::vector<std::string> aNames;
      for (const Completion& anOption : FindOptions(theCommand))
      {
         aNames.insert(aNames.end(), anOption.itsNames.begin(), anOption.itsNames.end());
      }
      std::cout << "      '" << theName << "') [[ $cur == -* ]] && word='" << Join(aNames) << "' || word='"
                << JoinNames(theCommand) << "' ;;\n";
   });
   std::cout << "   esac\n   COMPREPLY=($(compgen -W \"$word\" -- \"$cur\"))\n}\ncomplete -o default -F _tn tn\n";
}

std::string ZshFunction(const std::string& theName)
{
   std::string aName = "_tn" + std::string(!theName.empty(), '_') + theName;
   std::replace(aName.begin(), aName.end(), ' ', '_');
   return aName;
}

// In quotes for a shell.
std::string Quote(std::string theText)
{
   for (std::size_t aQuote = 0; (aQuote = theText.find('\'', aQuote)) != std::string::npos; aQuote += 4)
   {
      theText.replace(aQuote, 1, "'\\''");
   }
   return "'" + theText + "'";
}

void WriteZshOption(const Completion& theOption)
{
   const std::string aDescription = Escape(theOption.itsDescription, "[]:\\");
   for (const std::string& aName : theOption.itsNames)
   {
      const bool isLongWithValue = theOption.itsHasValue && aName.starts_with("--"); // --level image, --level=image
      std::string aText = aName + (isLongWithValue ? "=[" : "[") + aDescription + "]";
      if (theOption.itsHasValue)
      {
         aText += ":value:" + (theOption.itsChoices.empty() ? "_files" : "(" + Join(theOption.itsChoices) + ")");
      }
      std::cout << " \\\n      " << Quote(aText);
   }
}

// ((send\:"Send files" serve\:"Be a node")).
std::string ZshCommands(const std::vector<const CLI::App*>& theCommands)
{
   std::string aText;
   for (const CLI::App* aCommand : theCommands)
   {
      aText += (aText.empty() ? "" : " ") + aCommand->get_name() + "\\:\"" +
               Escape(aCommand->get_description(), "\\\":$`") + "\"";
   }
   return "((" + aText + "))";
}

void WriteZsh(const CLI::App& theProgram)
{
   std::cout << "#compdef tn\n";
   VisitCommands(theProgram, "", [](const CLI::App& theCommand, const std::string& theName) {
      std::cout << ZshFunction(theName) << "() {\n";
      const auto aCommands = FindCommands(theCommand);
      std::cout << (aCommands.empty() ? "   _arguments" : "   local state line\n   _arguments -C");
      for (const Completion& anOption : FindOptions(theCommand))
      {
         WriteZshOption(anOption);
      }
      if (aCommands.empty())
      {
         std::cout << " \\\n      '*:file:_files'\n}\n";
         return;
      }
      std::cout << " \\\n      " << Quote("1:command:" + ZshCommands(aCommands)) << " '*::argument:->argument'\n"
                << "   if [[ $state == argument ]]; then\n      case $line[1] in\n";
      for (const CLI::App* aCommand : aCommands)
      {
         const std::string aName = theName + (theName.empty() ? "" : " ") + aCommand->get_name();
         std::cout << "         " << aCommand->get_name() << ") " << ZshFunction(aName) << " ;;\n";
      }
      std::cout << "      esac\n   fi\n}\n";
   });
   std::cout << "_tn \"$@\"\n";
}

// Where the options and the inner commands of theName belong: "dicomdir list" has seen both words.
std::string FishCondition(const std::string& theName)
{
   std::string aText;
   std::istringstream aWords(theName);
   for (std::string aWord; aWords >> aWord;)
   {
      aText += (aText.empty() ? "" : "; and ") + ("__fish_seen_subcommand_from " + aWord);
   }
   return aText.empty() ? "__fish_use_subcommand" : aText;
}

void WriteFish(const CLI::App& theProgram)
{
   std::cout << "# fish completion for tn\n";
   VisitCommands(theProgram, "", [](const CLI::App& theCommand, const std::string& theName) {
      const std::string aCondition = FishCondition(theName);
      const auto aCommands = FindCommands(theCommand);
      const std::string isOpen =
          theName.empty() ? "" : "; and not __fish_seen_subcommand_from " + JoinNames(theCommand);
      for (const CLI::App* aCommand : aCommands)
      {
         std::cout << "complete -c tn -f -n '" << aCondition << isOpen << "' -a " << aCommand->get_name() << " -d '"
                   << Escape(aCommand->get_description(), "'\\") << "'\n";
      }
      for (const Completion& anOption : FindOptions(theCommand))
      {
         std::cout << "complete -c tn -n '" << aCondition << "'";
         for (const std::string& anOptionName : anOption.itsNames)
         {
            const bool isLong = anOptionName.starts_with("--");
            std::cout << (isLong ? " -l " : " -s ") << anOptionName.substr(isLong ? 2 : 1);
         }
         std::cout << (anOption.itsHasValue ? " -r" : "");
         if (!anOption.itsChoices.empty())
         {
            std::cout << " -f -a '" << Join(anOption.itsChoices) << "'";
         }
         std::cout << " -d '" << Escape(anOption.itsDescription, "'\\") << "'\n";
      }
   });
}
} // namespace

CompletionsCommand::CompletionsCommand(CLI::App& theProgram)
    : Command(theProgram, "completions", "Write the completions of tn for a shell"), itsProgram(theProgram)
{
   itsOptions.group(""); // hidden
   itsOptions.add_option("SHELL", itsShell, "bash, zsh or fish")
       ->required()
       ->check(CLI::IsMember({"bash", "zsh", "fish"}));
}

int CompletionsCommand::Run()
{
   itsShell == "bash" ? WriteBash(itsProgram) : itsShell == "zsh" ? WriteZsh(itsProgram) : WriteFish(itsProgram);
   std::cout.flush();
   return std::cout ? ExitCode::kDone : ExitCode::kCouldNotWrite;
}
