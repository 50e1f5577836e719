// Storage (PS3.4 B) as a node gives it: what peers send is kept in an Archive, byte for byte.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/archive/SpoolFile.h"
#include "apps/tn/node/NodeRole.h"
#include "talvenor/services/StorageClasses.h"

class Archive;
class InputTransferSyntax;
class InstanceKeys;
class Notices;
class StoreRefusal;

class StoreRole : public NodeRole
{
public:
   struct Settings
   {
      bool itsAcceptsUnknown = false; // SOP classes that are in no dictionary

      // For testing how peers bear it.
      unsigned int itsFailStatus = 0; // what every request is answered with; 0: as it should be
      double itsDelay = 0;            // seconds before each answer
      unsigned int itsAbortAfter = 0; // requests of an association; 0: none
   };

   // All are borrowed; theNotices may be null.
   StoreRole(Archive& theArchive, Notices* theNotices, const Settings& theSettings)
       : itsArchive(theArchive), itsNotices(theNotices), itsSettings(theSettings)
   {}

   // The SOP classes of the dictionary whose keyword has "Storage" in it, except those of storage commitment and the
   // directories of media, and the private ones that the library has a class for.
   bool Accepts(const RWCString& theAbstractSyntax) const override;
   bool TakesCompressed() const override { return true; }
   int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) override;
   std::string Describe() const override;

private:
   // The messages; what is stored does not go through it.
   class Messages : public UnknownStorage
   {
      int DoStore(DICOMDataObject&, InputTransferSyntax&, const RWCString&, const RWCString&, UINT16&, RWCString&,
                  RWTValOrderedVector<MAttributeTag>&) override
      {
         return 0;
      }
   };

   void Store(PDU_Service& theService, const DICOMCommandObject& theCommand, InputTransferSyntax& theInput);
   void Receive(PDU_Service& theService, const DICOMCommandObject& theCommand, InputTransferSyntax& theInput);
   void Tell(const PDU_Service& theService, const InstanceKeys& theKeys) const;
   SpoolFile& BeginFile();
   void MakeNextFile() noexcept;
   int Answer(PDU_Service& theService, const DICOMCommandObject& theCommand, const StoreRefusal* theRefusal);
   void LogRefusal(const PDU_Service& theService, const DICOMCommandObject& theCommand, const StoreRefusal& theRefusal);

   Archive& itsArchive;
   Notices* itsNotices;
   const Settings& itsSettings;
   Messages itsMessages;
   SpoolBuffer itsBuffer;
   std::unique_ptr<SpoolFile> itsFile;     // of the instance that is coming, or came last
   std::unique_ptr<SpoolFile> itsNextFile; // which is empty
   unsigned long itsStored = 0;
   unsigned long itsKnown = 0; // were stored already
   unsigned long itsRefused = 0;
};
