// The options that make a node keep what it is sent, and what they make.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/archive/Archive.h"
#include "apps/tn/archive/Notices.h"
#include "apps/tn/archive/StoreRole.h"
#include "apps/tn/node/NodeRole.h"

namespace CLI
{
class App;
} // namespace CLI

class StorageOptions
{
public:
   explicit StorageOptions(CLI::App& theOptions);

   bool IsWanted() const { return !itsArchiveSettings.itsFolder.empty(); }

   // Opens the archive. False, with a line on standard error, when that fails.
   bool Begin();

   // Of the archive, which has begun and must outlive it.
   NodeRoleMaker MakeRole();

   // Null without --store.
   Archive* GetArchive() const { return itsArchive.get(); }

   // When all associations have ended.
   void End();

private:
   Archive::Settings itsArchiveSettings;
   Notices::Settings itsNoticeSettings;
   StoreRole::Settings itsRoleSettings;
   std::string itsFailStatus;
   std::unique_ptr<Notices> itsNotices; // null when there are no commands
   std::unique_ptr<Archive> itsArchive;
};
