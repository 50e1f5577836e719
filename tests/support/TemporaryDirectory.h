// A directory of a test's own, removed with its contents, and the reading and writing of whole files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TemporaryDirectory
{
public:
   TemporaryDirectory()
   {
      std::string aTemplate = (std::filesystem::temp_directory_path() / "talvenor-test-XXXXXX").string();
      if (!mkdtemp(aTemplate.data()))
      {
         throw std::runtime_error("TemporaryDirectory: cannot make " + aTemplate);
      }
      itsPath = aTemplate;
   }
   ~TemporaryDirectory()
   {
      std::error_code anError;
      std::filesystem::remove_all(itsPath, anError);
   }
   TemporaryDirectory(const TemporaryDirectory&) = delete;
   TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

   std::string File(const std::string& theName) const { return (itsPath / theName).string(); }
   const std::filesystem::path& Path() const { return itsPath; }

   std::size_t FileCount() const
   {
      return std::size_t(std::distance(std::filesystem::directory_iterator(itsPath), {}));
   }

private:
   std::filesystem::path itsPath;
};

// Empty if there is no such file.
inline std::string ReadFile(const std::string& theFilename)
{
   std::ifstream aFile(theFilename, std::ios::binary);
   return std::string(std::istreambuf_iterator<char>(aFile), {});
}

inline void WriteFile(const std::string& theFilename, const std::string& theText)
{
   std::ofstream(theFilename, std::ios::binary) << theText;
}
