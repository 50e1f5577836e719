// The texts of --help: CLI11's, with types as people write them and descriptions in lines of a screen's width.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

class HelpFormatter : public CLI::Formatter
{
public:
   // In lines of the terminal's width, or of kWidest characters where that is less or standard output is none.
   static constexpr std::size_t kWidest = 102;
   HelpFormatter();

   std::string make_help(const CLI::App* theProgram, std::string theName, CLI::AppFormatMode theMode) const override;
   std::string make_option_opts(const CLI::Option* theOption) const override;
   std::string make_option_desc(const CLI::Option* theOption) const override;
   std::string make_subcommand(const CLI::App* theCommand) const override;
   std::string make_subcommands(const CLI::App* theProgram, CLI::AppFormatMode theMode) const override;
   std::string make_footer(const CLI::App* theProgram) const override;

   // Paragraphs in lines of up to theWidth characters; lines that begin with a blank are left as they are.
   static std::string Filled(const std::string& theText, std::size_t theWidth);

   // "TEXT:{implicit,explicit}" and "ENUM:value in {file->1,none->0} OR {1,0}" become their choices, "INT:INT in [0 -
   // 65535]" its range; the name that a command gives a type stays.
   static std::string SimplifyType(const std::string& theType);

private:
   std::string Description(const std::string& theText, std::size_t theColumn) const;

   std::size_t itsWidth;
};
