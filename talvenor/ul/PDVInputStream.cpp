#include "talvenor/ul/PDVInputStream.h"

#include <algorithm>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/ul/PDUInputStream.h"

namespace
{

constexpr UINT32 kBytesBehindItemLength = 2; // counted by the item length: context ID and control header

void Trace(const char* theText)
{
   if (gTNTracer(TNTrace::TNTracePDUVerbose))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << theText << "\n";
   }
}

// Reads one field of the header. The texts are those for none and for some of its bytes.
template <class Value>
Value ReadField(PDUInputStream& theStream, const char* theEOFText, const char* theShortText, TNResultCode theShortCode)
{
   Value aValue{};
   const unsigned int aCount = theStream.DULRead(aValue);
   if (aCount == 0)
   {
      throw StreamIOException(theEOFText, TN_END_OF_FILE, 0);
   }
   if (aCount != sizeof aValue)
   {
      throw StreamIOException(theShortText, theShortCode, 0);
   }
   return aValue;
}

} // namespace

PDVInputStream::~PDVInputStream() = default;

unsigned int PDVInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const UINT32 aWish = std::min<UINT32>(theCount, itsRemaining);
   const UINT32 aCount = aWish > 0 ? itsStream.Read(theBuffer, aWish) : 0;
   itsRemaining -= aCount;
   return aCount;
}

unsigned int PDVInputStream::Skip(unsigned int theCount)
{
   const UINT32 aWish = std::min<UINT32>(theCount, itsRemaining);
   const UINT32 aCount = aWish > 0 ? itsStream.Skip(aWish) : 0;
   itsRemaining -= aCount;
   return aCount;
}

unsigned int PDVInputStream::GetPreferredInputBlockSize() const
{
   return itsStream.GetPreferredInputBlockSize();
}

void PDVInputStream::Close()
{
   itsStream.Close();
}

int PDVInputStream::Start()
{
   if (itsRemaining == 0)
   {
      Trace("PDVInputStream::Start(): start reading new PDV");
      return ReadHeader();
   }
   if (itsRemaining != itsItemLength - kBytesBehindItemLength)
   {
      throw StreamIOException("Previous PDV not fully read when attempting read new PDV", TN_PDV_NOT_FINISHED, 0);
   }
   Trace("PDVInputStream::Start(): return now - PDV header is available");
   return 1;
}

// The end-of-message flag keeps what the previous PDV said until the whole header is there: an end of the connection is
// judged by it.
bool PDVInputStream::ReadHeader()
{
   itsItemLength = 0;
   itsContextID = 0;
   itsMessageType = NoMessage;
   itsRemaining = 0;
   if (!StartPDU())
   {
      return false;
   }
   itsItemLength =
       ReadField<unsigned int>(itsStream, "PDVInputStream::ReadHeader(): EOF while reading length",
                               "PDVInputStream::ReadHeader(): Short read while reading length", TN_INTERNAL_ERROR);
   if (itsItemLength < kBytesBehindItemLength)
   {
      throw StreamIOException("PDVInputStream::ReadHeader(): Invalid PDV length", TN_INVALID_PDU, 0);
   }
   itsContextID = ReadField<unsigned char>(
       itsStream, "PDVInputStream::ReadHeader(): EOF while reading presentation context ID",
       "PDVInputStream::ReadHeader(): Short read while reading presentation context ID", TN_END_OF_FILE);
   const auto aControl = ReadField<unsigned char>(
       itsStream, "PDVInputStream::ReadHeader(): EOF while reading PDV message header",
       "PDVInputStream::ReadHeader(): Short read while reading PDV message header", TN_END_OF_FILE);
   itsMessageType = (aControl & kCommandBit) != 0 ? CommandMessage : DataMessage;
   itsIsEndOfMessage = (aControl & kLastFragmentBit) != 0;
   itsRemaining = itsItemLength - kBytesBehindItemLength;
   TraceHeader();
   return true;
}

// False when the connection ends where it may.
bool PDVInputStream::StartPDU()
{
   if (!itsStream.HasMoreData() && !itsStream.Start())
   {
      if (!itsIsEndOfMessage)
      {
         throw StreamIOException("PDVInputStream::ReadHeader(): EOF while reading PDV header", TN_END_OF_FILE, 0);
      }
      return false;
   }
   if (itsStream.GetPDUType() != PDUInputStream::PDataTF)
   {
      const RWCString aText =
          "PDVInputStream::ReadHeader(): Unexpected PDU type received - Expected PDataTF PDU but got " +
          PDUInputStream::PDUTypeToString(itsStream.GetPDUType());
      throw StreamIOException(aText.c_str(), TN_UNEXPECTED_PDU, 0);
   }
   return true;
}

void PDVInputStream::TraceHeader() const
{
   const bool isWanted = itsMessageType == CommandMessage || itsIsEndOfMessage;
   if (!gTNTracer(TNTrace::TNTracePDataTF) || (!isWanted && !gTNTracer(TNTrace::TNTracePDUVerbose)))
   {
      return;
   }
   LogEntry anEntry(gTNTracer);
   anEntry << "PDVInputStream::ReadHeader(): Read PDV Header: \n"
           << "\tPDV Length: " << itsItemLength << "\n"
           << "\tRemaining PDV Length: " << itsRemaining << "\n"
           << "\tPresentation Context ID: " << int{itsContextID} << "\n"
           << "\tMessage Type: " << MessageTypeToString(itsMessageType) << "\n"
           << "\tEnd of Message: " << itsIsEndOfMessage << "\n";
}
