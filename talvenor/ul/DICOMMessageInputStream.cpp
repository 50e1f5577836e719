#include "talvenor/ul/DICOMMessageInputStream.h"

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{

// A PDV without data is legal, an endless series of them would keep a reader busy for nothing.
constexpr unsigned int kMaximumEmptyPDVs = 4096;

void Trace(const char* theText)
{
   if (gTNTracer(TNTrace::TNTracePDUVerbose))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "DICOMMessageInputStream::Read():" << theText << "\n";
   }
}

} // namespace

DICOMMessageInputStream::~DICOMMessageInputStream() = default;

int DICOMMessageInputStream::Start()
{
   if (HasUnfinishedMessage())
   {
      throw StreamIOException(
          "PDVInputStream::Start(): Previous message not finished when attempting to start reading next message",
          TN_MESSAGE_NOT_FINISHED, 0);
   }
   itsLength = 0;
   itsMessageContextID = 0;
   const int isStarted = PDVInputStream::Start();
   itsMessageContextID = PDVInputStream::GetPresentationContextID();
   itsFirstType = GetMessageType();
   return isStarted;
}

unsigned int DICOMMessageInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   return ForEachPiece(
       theCount, [&](unsigned int theDone) { return PDVInputStream::Read(theBuffer + theDone, theCount - theDone); });
}

unsigned int DICOMMessageInputStream::Skip(unsigned int theCount)
{
   return ForEachPiece(theCount, [&](unsigned int theDone) { return PDVInputStream::Skip(theCount - theDone); });
}

void DICOMMessageInputStream::Flush()
{
   while (HasUnfinishedMessage())
   {
      Skip(0xFFFFFFFF);
   }
}

unsigned int DICOMMessageInputStream::GetPreferredInputBlockSize() const
{
   return PDVInputStream::GetPreferredInputBlockSize();
}

void DICOMMessageInputStream::Close()
{
   PDVInputStream::Close();
}

// Has theOperation take data of the current PDV, told how many bytes came before, and goes on to the next PDV as often
// as needed. Bytes count for the message as they come: what arrived before a failure is gone.
template <class Operation>
unsigned int DICOMMessageInputStream::ForEachPiece(unsigned int theCount, Operation theOperation)
{
   unsigned int aDone = 0;
   while (aDone < theCount && StartNextPDV())
   {
      const unsigned int aPiece = theOperation(aDone);
      if (aPiece == 0)
      {
         throw StreamIOException("DICOMMessageInputStream::Read(): unable to read all data in PDV", TN_END_OF_FILE, 0);
      }
      aDone += aPiece;
      itsLength += aPiece;
   }
   return aDone;
}

// Makes data available. False at the end of the message.
bool DICOMMessageInputStream::StartNextPDV()
{
   for (unsigned int anEmptyCount = 0; !HasMoreData(); ++anEmptyCount)
   {
      if (IsEndOfMessage())
      {
         Trace(" end of message reached");
         return false;
      }
      if (anEmptyCount > kMaximumEmptyPDVs)
      {
         throw StreamIOException("DICOMMessageInputStream::Read(): too many PDVs without data", TN_INVALID_PDU, 0);
      }
      Trace(" start reading new PDV");
      PDVInputStream::Start();
      if (GetPresentationContextID() != itsMessageContextID)
      {
         throw StreamIOException("PDU_Service::GetInputTransferSyntax(): Presentation context specified in data "
                                 "message does not match current presentation context in use for command",
                                 TN_PDV_CONTEXT_MISMATCH, 0);
      }
      if (GetMessageType() != itsFirstType)
      {
         throw StreamIOException("DICOMMessageInputStream::Read(): message type changed within a message",
                                 TN_INVALID_ENCODING, 0);
      }
   }
   return true;
}
