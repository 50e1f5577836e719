// The name of a file in the temporary directory, unique in this process and among others, and removed at the end.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

class TemporaryFile
{
public:
   TemporaryFile() : itsPath(std::filesystem::temp_directory_path() / NewName()) {}
   explicit TemporaryFile(std::string_view theContents) : TemporaryFile() { Write(theContents); }
   ~TemporaryFile()
   {
      std::error_code anIgnoredError; // it may never have been made
      std::filesystem::remove(itsPath, anIgnoredError);
   }
   TemporaryFile(const TemporaryFile&) = delete;
   TemporaryFile& operator=(const TemporaryFile&) = delete;

   const char* Name() const { return itsPath.c_str(); }
   const std::filesystem::path& Path() const { return itsPath; }

   void Write(std::string_view theContents) const
   {
      std::ofstream(itsPath, std::ios::binary | std::ios::trunc) << theContents;
   }

   std::string Contents() const
   {
      std::ifstream aFile(itsPath, std::ios::binary);
      return {std::istreambuf_iterator<char>(aFile), {}};
   }

private:
   static std::string NewName()
   {
      std::random_device aSource;
      return "talvenor-test-" + std::to_string(aSource()) + std::to_string(aSource());
   }

   std::filesystem::path itsPath;
};
