#include "apps/tn/answers/MoveRole.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/base/Tags.h"
#include "apps/tn/node/GuardedStream.h"
#include "apps/tn/node/NodeLog.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
constexpr UINT32 kMoveDestination = 0x00000600;

constexpr const char* kSOPClasses[] = {"1.2.840.10008.5.1.4.1.2.1.2", "1.2.840.10008.5.1.4.1.2.2.2",
                                       "1.2.840.10008.5.1.4.1.2.3.2"};
} // namespace

// Connects to destinations under the deadlines of the association that asks for the move. One that has not answered a
// few times is not called again in that move: each call may take minutes, and there may be thousands of instances.
class MoveRole::Factory : public DULStreamFactory
{
public:
   // For another move; theModel is borrowed.
   void Begin(GuardedStream* theModel)
   {
      itsModel = theModel;
      itsFailures = 0;
   }

   // Whether the destination was reached for an instance.
   void NoteReached(bool theAnswer) { itsFailures = theAnswer ? 0 : itsFailures + 1; }

   DULStream* GetConnectedDULStream(const RWCString& theHost, const RWCString& thePort) override
   {
      constexpr unsigned int kMostFailures = 3;
      return itsModel == nullptr || itsFailures >= kMostFailures ? nullptr
                                                                 : new GuardedStream(theHost, thePort, *itsModel);
   }

private:
   GuardedStream* itsModel = nullptr;
   unsigned int itsFailures = 0;
};

MoveRole::MoveRole(Archive& theArchive, const PeerList* thePeers, ArchiveRetrieve::Settings theSettings)
    : itsArchive(theArchive), itsPeers(thePeers), itsSettings(std::move(theSettings)),
      itsFactory(std::make_unique<Factory>())
{}

MoveRole::~MoveRole()
{
   if (itsDestination != nullptr)
   {
      itsDestination->Close();
   }
}

bool MoveRole::Accepts(const RWCString& theAbstractSyntax) const
{
   return std::find(std::begin(kSOPClasses), std::end(kSOPClasses), theAbstractSyntax) != std::end(kSOPClasses);
}

int MoveRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   auto* const aStream = dynamic_cast<GuardedStream*>(theService.GetDULStream());
   itsFactory->Begin(aStream);
   const RWCString aTitle = TextOf(theCommand, kMoveDestination);
   if (itsDestination != nullptr && aTitle != itsDestinationTitle)
   {
      itsDestination->Close(); // it is another one
      itsDestination.reset();
   }
   if (itsDestination == nullptr)
   {
      itsDestination = std::make_unique<PDU_Service>(*itsFactory);
      itsDestinationTitle = aTitle;
   }
   ArchiveRetrieve aRetrieve(
       TextOf(theCommand, CommandTag::kAffectedSOPClassUID), itsArchive, itsPeers, itsSettings, aStream,
       [&](const std::string& theText) { itsLog.Line(theService, theText); },
       [&](bool theAnswer) { itsFactory->NoteReached(theAnswer); });
   UINT16 aStatus = 0;
   RWCString aComment;
   unsigned int aCompleted = 0;
   unsigned int aFailed = 0;
   unsigned int aWarning = 0;
   const int isAnswered =
       aRetrieve.Read(theService, *itsDestination, theCommand, aStatus, aComment, aCompleted, aFailed, aWarning);
   itsMoved += aCompleted;
   itsFailed += aFailed;
   return (isAnswered || aRetrieve.HasRefused()) && !aRetrieve.IsLost();
}

std::string MoveRole::Describe() const
{
   return itsMoved + itsFailed == 0 ? ""
                                    : std::to_string(itsMoved) + " moved" +
                                          (itsFailed == 0 ? "" : ", " + std::to_string(itsFailed) + " failed");
}
