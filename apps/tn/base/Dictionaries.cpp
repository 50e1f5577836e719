#include "apps/tn/base/Dictionaries.h"

#include <filesystem>
#include <stdexcept>

#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/foundation/TNXInitializer.h"

namespace
{
namespace fs = std::filesystem;

constexpr char kAttributes[] = "dicom.dic";
constexpr char kUIDs[] = "uid.dic";
constexpr char kPrivateIndex[] = "private/index";

fs::path FindFolder(const std::string& theFolder)
{
   if (!theFolder.empty())
   {
      return theFolder;
   }
   std::error_code anError;
   const fs::path aProgramFolder = fs::read_symlink("/proc/self/exe", anError).parent_path();
   const fs::path aPlaces[] = {aProgramFolder / "talvenor-data", aProgramFolder.parent_path() / "share" / "talvenor"};
   for (const fs::path& aPlace : aPlaces)
   {
      if (fs::exists(aPlace / kAttributes, anError))
      {
         return aPlace;
      }
   }
   throw std::runtime_error("no dictionaries found in " + aPlaces[0].string() + " or " + aPlaces[1].string() +
                            "; name their folder with --data");
}

void Require(bool isLoaded, const fs::path& theFile)
{
   if (!isLoaded)
   {
      throw std::runtime_error("cannot read the dictionary " + theFile.string());
   }
}
} // namespace

void LoadDictionaries(const std::string& theFolder)
{
   const fs::path aFolder = FindFolder(theFolder);
   try
   {
      Require(TNXInitializer::SetDataDictionary((aFolder / kAttributes).string()), aFolder / kAttributes);
      Require(TNXInitializer::SetUIDDictionary((aFolder / kUIDs).string()), aFolder / kUIDs);
   }
   catch (const ExceptionBase& anException)
   {
      throw std::runtime_error("the dictionaries in " + aFolder.string() + " are damaged: " + anException.why());
   }
   // A folder of the user's own need not have private dictionaries.
   PrivateDataDictionaryCatalog::AddDeferredIndexToDefaultCatalog((aFolder / kPrivateIndex).string());
}
