// The retrieve service (PS3.4 C.4.2) over an archive: what an identifier selects, and the instances from their files.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "apps/tn/answers/IndexLevel.h"
#include "talvenor/services/StandardRetrieve.h"

class Archive;
class GuardedStream;
class Part10InputStream;
class PeerList;

class ArchiveRetrieve : public StandardRetrieve
{
public:
   struct Settings
   {
      bool itsIsRelational = false;
      std::string itsTitle; // that destinations are called with
   };

   // All are borrowed. theLog gets a line for each instance that could not be sent, theReached whether the destination
   // was on the other end, for each for which it was needed.
   ArchiveRetrieve(const RWCString& theSOPClass, Archive& theArchive, const PeerList* thePeers,
                   const Settings& theSettings, GuardedStream* theStream,
                   std::function<void(const std::string&)> theLog, std::function<void(bool)> theReached);
   ~ArchiveRetrieve() override;

   int DoQuery(DICOMDataObject& theIdentifier, int theModel, const RWCString& thePeerTitle,
               RWTValOrderedVector<DICOMDataObject*>& theMatches, UINT16& theStatus, RWCString& theErrorComment,
               RWTValOrderedVector<MAttributeTag>& theOffending) override;
   int RetrieveHeader(const DICOMDataObject* theMatch, DICOMDataObject& theHeader, InputTransferSyntax*& theInput,
                      const TransferSyntaxType*& theSourceSyntax, unsigned int& theSize) override;
   void DoStreamingDecompression(DICOMDataObject& theHeader, const TransferSyntaxType* theSourceSyntax,
                                 PixelDataFragmentInputStreamVR* theCompressedPixels,
                                 VR*& theDecompressedPixels) override;
   void CMoveProgressCallback(PDU_Service& theService, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier,
                              int theProgress) override;
   void CMoveServiceProgressCallback(PDU_Service& theService, const DICOMObject& theObject, unsigned int theSize,
                                     UINT16 theStatus, const RWCString& theMessage,
                                     CMoveProgressType theProgress) override;
   int uGetUID(UID& theUID) const override;
   int GetMoveDestination(const RWCString& theDestinationTitle, RWCString& theCallingTitle, RWCString& theHost,
                          RWCString& thePort) override;
   InputStream* OpenStoredDataset() override;
   bool IsMoveCancelled(PDU_Service& theMoveService) override;

   // Whether the peer has said something that is not understood: the association cannot go on.
   bool IsLost() const { return itsIsLost; }

   // Whether the request was answered with a refusal, which is no failure of the association.
   bool HasRefused() const { return itsHasRefused; }

private:
   void Select(IndexModel theModel, const DICOMDataObject& theIdentifier,
               RWTValOrderedVector<DICOMDataObject*>& theMatches) const;

   RWCString itsSOPClass;
   Archive& itsArchive;
   const PeerList* itsPeers;
   Settings itsSettings;
   GuardedStream* itsStream; // of the C-MOVE
   std::function<void(const std::string&)> itsLog;
   std::function<void(bool)> itsReached;
   std::string itsPath;                        // of the instance that is being sent
   std::unique_ptr<Part10InputStream> itsFile; // and its file
   bool itsIsLost = false;
   bool itsHasRefused = false;
   bool itsIsAnnounced = false; // the instance, to the destination
   std::string itsReason;       // why it cannot be
};
