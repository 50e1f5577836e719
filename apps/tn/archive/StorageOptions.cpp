#include "apps/tn/archive/StorageOptions.h"

#include <iostream>
#include <map>

#include <CLI/CLI.hpp>

#include "apps/tn/base/NumberCheck.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr char kGroup[] = "Storage";

const std::map<std::string, Archive::Synchronising> kSynchronising = {
    {"none", Archive::Synchronising::kNone},
    {"file", Archive::Synchronising::kFile},
    {"group", Archive::Synchronising::kGroup},
};

const std::map<std::string, Archive::Duplicates> kDuplicates = {
    {"refuse", Archive::Duplicates::kRefuse},
    {"replace", Archive::Duplicates::kReplace},
};
} // namespace

StorageOptions::StorageOptions(CLI::App& theOptions)
{
   theOptions.add_option("--store", itsArchiveSettings.itsFolder, "Folder to keep what is sent, with its index")
       ->group(kGroup);
   theOptions
       .add_option(
           "--fsync", itsArchiveSettings.itsSynchronising,
           "What is waited for before an instance is answered for: group (default): it is on the disk and in the "
           "index, with what others send meanwhile; file: the same, each for itself; none: its file has its "
           "name, which survives a crash of the program but not of the machine; the index follows")
       ->transform(CLI::CheckedTransformer(kSynchronising))
       ->group(kGroup);
   theOptions
       .add_option("--duplicates", itsArchiveSettings.itsDuplicates,
                   "Another data set with the UID of a stored instance: refuse (default) or replace. An equal one is "
                   "answered with Success")
       ->transform(CLI::CheckedTransformer(kDuplicates))
       ->group(kGroup);
   theOptions
       .add_flag("--accept-unknown", itsRoleSettings.itsAcceptsUnknown, "Keep SOP classes that nobody knows, too")
       ->group(kGroup);
   theOptions
       .add_option("--on-object", itsNoticeSettings.itsObjectCommand,
                   "Command for each instance; see TN_FILE, TN_INSTANCE, TN_SERIES, TN_STUDY, TN_SOP_CLASS, TN_FOLDER "
                   "and TN_AET in its environment")
       ->group(kGroup);
   theOptions
       .add_option("--on-study", itsNoticeSettings.itsStudyCommand,
                   "Command for each study that nothing has come for lately; see TN_STUDY, TN_FOLDER and TN_AET")
       ->group(kGroup);
   theOptions.add_option("--quiet-for", itsNoticeSettings.itsQuietSeconds, "Seconds that this is")
       ->check(NotNegative())
       ->capture_default_str()
       ->group(kGroup);
   theOptions
       .add_option("--fail", itsFailStatus, "For testing: store nothing, and answer with this status (hexadecimal)")
       ->check([](const std::string& theText) {
          const bool isNumber = !theText.empty() && theText.size() <= 4 &&
                                theText.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
          return isNumber ? "" : "not a status of up to four hexadecimal digits";
       })
       ->group(kGroup);
   theOptions.add_option("--delay", itsRoleSettings.itsDelay, "For testing: seconds to wait before each answer")
       ->check(NotNegative())
       ->group(kGroup);
   theOptions
       .add_option("--abort-after", itsRoleSettings.itsAbortAfter,
                   "For testing: abort each association after so many instances")
       ->check(Positive())
       ->group(kGroup);
}

bool StorageOptions::Begin()
{
   if (!itsFailStatus.empty())
   {
      itsRoleSettings.itsFailStatus = static_cast<unsigned int>(std::stoul(itsFailStatus, nullptr, 16));
   }
   try
   {
      itsArchive = std::make_unique<Archive>(itsArchiveSettings);
   }
   catch (const std::exception& anError)
   {
      std::cerr << OnOneLine(std::string("tn serve: --store: ") + anError.what()) << "\n";
      return false;
   }
   if (!itsNoticeSettings.itsObjectCommand.empty() || !itsNoticeSettings.itsStudyCommand.empty())
   {
      itsNotices = std::make_unique<Notices>(itsNoticeSettings);
   }
   return true;
}

NodeRoleMaker StorageOptions::MakeRole()
{
   return [this] { return std::make_unique<StoreRole>(*itsArchive, itsNotices.get(), itsRoleSettings); };
}

void StorageOptions::End()
{
   itsNotices.reset();
   itsArchive.reset();
}
