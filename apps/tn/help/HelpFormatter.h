// The texts of --help: CLI11's, with types as people write them and descriptions in lines of a screen's width.
#pragma once

#include <CLI/CLI.hpp>

class HelpFormatter : public CLI::Formatter
{
public:
   std::string make_option_opts(const CLI::Option* theOption) const override;
   std::string make_option_desc(const CLI::Option* theOption) const override;

   // "TEXT:{implicit,explicit}" and "ENUM:value in {file->1,none->0} OR {1,0}" become their choices, "INT:INT in [0 -
   // 65535]" its range; the name that a command gives a type stays.
   static std::string SimplifyType(const std::string& theType);
};
