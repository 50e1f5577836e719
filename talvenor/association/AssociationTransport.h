// What carries one association: the byte stream and the PDU streams on it. The service and the message streams that it
// hands out share it, so that a stream that outlives the association fails instead of leaning on nothing. Not part of
// the library's interface.
#pragma once

#include <memory>

#include "talvenor/ul/DICOMMessageInputStream.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"

class AssociationTransport
{
public:
   explicit AssociationTransport(std::unique_ptr<DULStream> theStream)
       : itsStream(std::move(theStream)), itsInput(*itsStream),
         itsOutput(*itsStream, PDUOutputStream::GetDefaultMaxPDUSendLength()), itsMessage(itsInput)
   {}

   DULStream& GetStream() { return *itsStream; }
   PDUInputStream& GetInput() { return itsInput; }
   PDUOutputStream& GetOutput() { return itsOutput; }

   // The message being received.
   DICOMMessageInputStream& GetMessage() { return itsMessage; }

   // Once: closing what is closed does nothing.
   void Close()
   {
      if (itsIsOpen)
      {
         itsIsOpen = false;
         itsStream->Close();
      }
   }
   bool IsOpen() const { return itsIsOpen; }

private:
   std::unique_ptr<DULStream> itsStream;
   PDUInputStream itsInput;
   PDUOutputStream itsOutput;
   DICOMMessageInputStream itsMessage;
   bool itsIsOpen = true;
};
