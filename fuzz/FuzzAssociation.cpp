// A whole association with a peer whose bytes are the input: as acceptor, which then answers C-ECHO, or as requester,
// which then sends one, by byte 0; it ends with a release or, by another bit, without. Nothing may escape from the
// service.
#include <algorithm>
#include <memory>

#include "fuzz/Fuzzing.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/services/Verification.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
class Peer final : public DULStream
{
public:
   Peer(const unsigned char* theBytes, std::size_t theCount)
       : DULStream(256, 256), itsBytes(theBytes), itsCount(theCount)
   {}
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const auto aCount = static_cast<unsigned int>(std::min<std::size_t>(theCount, itsCount));
      std::copy_n(itsBytes, aCount, theBuffer);
      itsBytes += aCount;
      itsCount -= aCount;
      return aCount;
   }
   void Write(IOBuffer* theBuffer) override { delete theBuffer; }
   void Write(const unsigned char*, unsigned int) override {}
   void Close() override {}

private:
   const unsigned char* itsBytes;
   std::size_t itsCount;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theBytes, std::size_t theCount)
{
   constexpr unsigned int kIsRequester = 1;
   constexpr unsigned int kIsReleased = 2;
   static DULStreamFactory aFactory;
   if (theCount == 0)
   {
      return 0;
   }
   const unsigned int aDecision = theBytes[0];
   PDU_Service aService(aFactory);
   aService.SetARRTimer(1);
   aService.AddPresentationContextProposal("1.2.840.10008.1.1", "1.2.840.10008.1.2");
   DULStream* const aPeer = new Peer(theBytes + 1, theCount - 1);
   DICOMCommandObject aCommand;
   if (aDecision & kIsRequester)
   {
      if (aService.RequestAssociation(aPeer))
      {
         Verification().Write(aService);
      }
   }
   else if (aService.WaitForAssociationRequest(aPeer))
   {
      while (aService.ReadCommand(aCommand) && Verification().Read(aService, aCommand))
      {}
   }
   Require(aService.GetResultCode() >= TN_NO_ERROR, "a result code");
   if (aDecision & kIsReleased)
   {
      aService.Close();
      Require(!aService.Connected(), "closed is closed");
   }
   return 0;
}
