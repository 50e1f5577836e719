// Reads the input as what a peer sends to set up and end an association: one PDU after another, each by its type. What
// was read is dumped, written, and read again, which must change nothing; what was refused is skipped.
//
//    byte 0     how long PDUs may be: anything, or as many bytes as it says
//    the rest   PDUs
#include "fuzz/Fuzzing.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/ul/AAbortRQPDU.h"
#include "talvenor/ul/AAssociateACPDU.h"
#include "talvenor/ul/AAssociateRJPDU.h"
#include "talvenor/ul/AAssociateRQPDU.h"
#include "talvenor/ul/AReleaseRPPDU.h"
#include "talvenor/ul/AReleaseRQPDU.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "tests/support/MemoryDULStream.h"

namespace
{
template <class PDU>
void WriteAndReadAgain(PDU& thePDU)
{
   MemoryDULStream aTransport(ScriptedChannel({}));
   PDUOutputStream anOutput(aTransport, 64);
   const unsigned int aSize = thePDU.Size();
   if (!thePDU.Write(anOutput))
   {
      Require(aTransport.Written().empty() && anOutput.GetPDULength() == 0, "half a PDU was sent");
      return;
   }
   Require(aTransport.Written().size() == aSize, "the size is wrong");
   MemoryDULStream aCopy(ScriptedChannel(aTransport.Written()));
   PDUInputStream anInput(aCopy);
   anInput.SetMaxPDUReceiveLength(0);
   PDU anAgain;
   unsigned int aCount = 0;
   anAgain.Read(anInput, aCount);
   Require(aCount == aSize && anAgain == thePDU, "what was written is read otherwise");
}

template <class PDU>
void ReadOne(PDUInputStream& theStream, PDU& thePDU)
{
   const UINT32 aLength = theStream.GetPDULength();
   unsigned int aCount = 0;
   thePDU.ReadDynamic(theStream, aCount);
   Require(aCount == 5 + UINT64{aLength} && !theStream.HasMoreData(), "a PDU was not read to its end");
   LogStream aLog(NullOutput());
   thePDU.Dump(aLog);
   WriteAndReadAgain(thePDU);
}

// The service keeps one PDU of each kind, which is read over and over.
class Association
{
public:
   void Read(PDUInputStream& theStream)
   {
      switch (theStream.GetPDUType())
      {
      case PDUInputStream::AAssociateRQ: return ReadOne(theStream, itsRequest);
      case PDUInputStream::AAssociateAC: return ReadOne(theStream, itsAcceptance);
      case PDUInputStream::AAssociateRJ: return ReadOne(theStream, itsRejection);
      case PDUInputStream::AReleaseRQ: return ReadOne(theStream, itsRelease);
      case PDUInputStream::AReleaseRP: return ReadOne(theStream, itsAgreement);
      case PDUInputStream::AAbortRQ: return ReadOne(theStream, itsAbort);
      default: theStream.SkipRemaining();
      }
   }

private:
   AAssociateRQPDU itsRequest;
   AAssociateACPDU itsAcceptance;
   AAssociateRJPDU itsRejection;
   AReleaseRQPDU itsRelease;
   AReleaseRPPDU itsAgreement;
   AAbortRQPDU itsAbort;
};

// True when the next PDU may be read.
bool ReadNext(Association& theAssociation, PDUInputStream& theStream)
{
   bool isStarted = false;
   try
   {
      isStarted = theStream.Start();
      if (isStarted)
      {
         theAssociation.Read(theStream);
      }
      return isStarted;
   }
   catch (const StreamIOException& anException)
   {
      Require(anException.why()[0] != '\0' && anException.GetResultCode() != TN_NO_ERROR, "a failure without a reason");
   }
   try
   {
      theStream.SkipRemaining();
      return isStarted;
   }
   catch (const StreamIOException&)
   {
      return false; // the input ended inside
   }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize == 0)
   {
      return 0;
   }
   MemoryDULStream aTransport(ScriptedChannel(FuzzBytes(theData + 1, theData + theSize)));
   PDUInputStream aStream(aTransport);
   aStream.SetMaxPDUReceiveLength(theData[0]);
   Association anAssociation;
   while (ReadNext(anAssociation, aStream))
   {}
   return 0;
}
