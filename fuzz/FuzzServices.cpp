// The services of both roles on an association whose peer sends what the input says. A byte a message chooses among the
// services below and tells what follows:
//
//    bits 0 to 2   the presentation context, and with it the service
//    bit 3         a data set follows the command set
//    bit 4         what follows is the response to a request of ours, where the service has that role
//
// then the length of the command set (2 bytes, big endian) and the command set in implicit VR little endian, and the
// data set in the same way. Nothing may escape from the services.
#include <algorithm>
#include <memory>
#include <string>

#include "fuzz/Fuzzing.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/print/PrintManagementMetas.h"
#include "talvenor/services/QueryModels.h"
#include "talvenor/services/RetrieveModels.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/services/Verification.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
class Peer final : public DULStream
{
public:
   explicit Peer(std::string theBytes) : DULStream(256, 256), itsBytes(std::move(theBytes)) {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const auto aCount = static_cast<unsigned int>(std::min<std::size_t>(theCount, itsBytes.size() - itsPlace));
      std::copy_n(itsBytes.begin() + static_cast<std::ptrdiff_t>(itsPlace), aCount, theBuffer);
      itsPlace += aCount;
      return aCount;
   }
   void Write(IOBuffer* theBuffer) override { delete theBuffer; }
   void Write(const unsigned char*, unsigned int) override {}
   void Close() override {}

private:
   std::string itsBytes;
   std::size_t itsPlace = 0;
};

// One that reaches nobody.
class NoFactory : public DULStreamFactory
{
public:
   DULStream* GetConnectedDULStream(const RWCString&, const RWCString&) override { return new Peer(""); }
};

class Storage : public UnknownStorage
{
   int DoStore(DICOMDataObject& theDataset, InputTransferSyntax& theInput, const RWCString&, const RWCString&, UINT16&,
               RWCString&, RWTValOrderedVector<MAttributeTag>&) override
   {
      while (VR* const aVR = theInput.NextVR())
      {
         theDataset.Push(aVR);
      }
      return !theDataset.IsEmpty();
   }
};

class Query : public PatientRootQuery
{
   int DoQuery(DICOMDataObject& theIdentifier, int, const RWCString&, RWTValOrderedVector<DICOMDataObject*>& theMatches,
               UINT16& theStatus, RWCString&, RWTValOrderedVector<MAttributeTag>&) override
   {
      theMatches.push_back(new DICOMDataObject(theIdentifier));
      theStatus = theIdentifier.GetUINT16(0x0028, 0x0010);
      return !theIdentifier.IsEmpty();
   }
   void CFindProgressCallback(PDU_Service&, DICOMCommandObject&, DICOMDataObject&, int) override {}
};

class Retrieve : public StudyRootRetrieve
{
   int DoQuery(DICOMDataObject& theIdentifier, int, const RWCString&, RWTValOrderedVector<DICOMDataObject*>& theMatches,
               UINT16&, RWCString&, RWTValOrderedVector<MAttributeTag>&) override
   {
      theMatches.push_back(new DICOMDataObject(theIdentifier));
      return 1;
   }
   int RetrieveHeader(const DICOMDataObject*, DICOMDataObject&, InputTransferSyntax*&, const TransferSyntaxType*&,
                      unsigned int&) override
   {
      return 1;
   }
   void DoStreamingDecompression(DICOMDataObject&, const TransferSyntaxType*, PixelDataFragmentInputStreamVR*,
                                 VR*&) override
   {}
   void CMoveProgressCallback(PDU_Service&, DICOMCommandObject&, DICOMDataObject&, int) override {}
   int GetMoveDestination(const RWCString& theTitle, RWCString&, RWCString&, RWCString&) override
   {
      return !theTitle.empty();
   }
};

class Print : public BasicGrayscalePrintManagementMeta
{
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override { return 1; }
   unsigned int GetAnnotationBoxCount(const RWCString& theFormat) override
   {
      return static_cast<unsigned int>(theFormat.size());
   }
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject&, UINT16, void*) override {}
   void PrintJobEventCallback(AbstractPrintJob&, DICOMDataObject&, UINT16, void*) override {}
   int ErrorCallback(const ErrorDescription&) override { return 0; }
};

// By the number of the context.
constexpr const char* kContexts[] = {
    "1.2.840.10008.1.1",     "1.2.840.10008.5.1.4.1.1.7", "1.2.840.10008.5.1.4.1.2.1.1", "1.2.840.10008.5.1.4.1.2.2.2",
    "1.2.840.10008.5.1.1.9", "1.2.840.10008.5.1.1.23",    "1.2.840.10008.5.1.1.16",      "1.2.840.10008.5.1.1.14"};
enum Context
{
   kVerification,
   kStorage,
   kQuery,
   kRetrieve,
   kPrint // and what is behind
};

std::string Number(std::size_t theNumber, int theSize)
{
   std::string aText;
   for (int aShift = 8 * (theSize - 1); aShift >= 0; aShift -= 8)
   {
      aText += static_cast<char>(theNumber >> aShift);
   }
   return aText;
}

std::string Item(char theType, const std::string& theBody)
{
   return std::string{theType, '\0'} + Number(theBody.size(), 2) + theBody;
}

std::string Acceptance()
{
   std::string aBody = Number(1, 2) + std::string(2, '\0') + std::string(32, ' ') + std::string(32, '\0') +
                       Item(0x10, "1.2.840.10008.3.1.1.1");
   for (std::size_t i = 0; i < std::size(kContexts); ++i)
   {
      aBody += Item(0x21, std::string{static_cast<char>(2 * i + 1), 0, 0, 0} + Item(0x40, "1.2.840.10008.1.2"));
   }
   aBody += Item(0x50, Item(0x51, Number(16384, 4)) + Item(0x52, "1.2.3"));
   return std::string{2, 0} + Number(aBody.size(), 4) + aBody;
}

std::string Message(unsigned int theContext, bool theIsCommand, const std::string& theBytes)
{
   const std::string aPDV = std::string{static_cast<char>(2 * theContext + 1), theIsCommand ? '\3' : '\2'} + theBytes;
   return std::string{4, 0} + Number(aPDV.size() + 4, 4) + Number(aPDV.size(), 4) + aPDV;
}

// The bytes of the input, from the front; none behind its end.
class Input
{
public:
   Input(const unsigned char* theBytes, std::size_t theCount) : itsBytes(theBytes), itsCount(theCount) {}

   bool IsEmpty() const { return itsCount == 0; }
   unsigned int Byte()
   {
      const std::string aByte = Bytes(1);
      return aByte.empty() ? 0 : static_cast<unsigned char>(aByte.front());
   }
   std::string CountedBytes()
   {
      const unsigned int aCount = Byte() << 8;
      return Bytes(aCount | Byte());
   }

private:
   std::string Bytes(std::size_t theCount)
   {
      const std::size_t aCount = std::min(theCount, itsCount);
      const std::string aText(reinterpret_cast<const char*>(itsBytes), aCount);
      itsBytes += aCount;
      itsCount -= aCount;
      return aText;
   }

   const unsigned char* itsBytes;
   std::size_t itsCount;
};

struct Services
{
   Verification itsVerification;
   Storage itsStorage;
   Query itsQuery;
   Retrieve itsRetrieve;
   Print itsPrint;
};

void Serve(Services& theServices, PDU_Service& theService, PDU_Service& theDestination, unsigned int theContext,
           DICOMCommandObject& theCommand)
{
   UINT16 aStatus = 0;
   RWCString aComment;
   unsigned int aCounts[3] = {};
   DICOMDataObject aDataset;
   switch (theContext)
   {
   case kVerification: theServices.itsVerification.Read(theService, theCommand); break;
   case kStorage: theServices.itsStorage.Read(theService, theCommand, aDataset); break;
   case kQuery: theServices.itsQuery.Read(theService, theCommand, aStatus, aComment, aCounts[0]); break;
   case kRetrieve:
      theServices.itsRetrieve.Read(theService, theDestination, theCommand, aStatus, aComment, aCounts[0], aCounts[1],
                                   aCounts[2]);
      break;
   default: theServices.itsPrint.Read(theService, theCommand);
   }
}

void Request(Services& theServices, PDU_Service& theService, unsigned int theContext)
{
   DICOMDataObject aDataset;
   DICOMCommandObject aResponse;
   switch (theContext)
   {
   case kVerification: theServices.itsVerification.Write(theService); break;
   case kStorage: theServices.itsStorage.ReadResponse(theService, aResponse); break;
   case kQuery: theServices.itsQuery.Write(theService, aDataset); break;
   case kRetrieve: theServices.itsRetrieve.Write(theService, aDataset, AETitle("THERE")); break;
   case kPrint: {
      Print aSession;
      aSession.Add(new AbstractFilmBox(aSession));
      UID aJob;
      aSession.PrintSession(theService, aJob);
      break;
   }
   default: theServices.itsPrint.GetPrinter(theService, aDataset);
   }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theBytes, std::size_t theCount)
{
   constexpr unsigned int kContextBits = 7;
   constexpr unsigned int kHasDataset = 8;
   constexpr unsigned int kIsResponse = 16;
   SetUpFuzzing();
   Input anInput(theBytes, theCount);
   std::string aBytes = Acceptance();
   std::vector<unsigned int> aDecisions;
   while (!anInput.IsEmpty())
   {
      const unsigned int aDecision = anInput.Byte();
      aBytes += Message(aDecision & kContextBits, true, anInput.CountedBytes());
      if (aDecision & kHasDataset)
      {
         aBytes += Message(aDecision & kContextBits, false, anInput.CountedBytes());
      }
      aDecisions.push_back(aDecision);
   }

   static NoFactory aFactory;
   PDU_Service aService(aFactory);
   PDU_Service aDestination(aFactory);
   aService.SetARRTimer(1);
   for (const char* const aContext : kContexts)
   {
      aService.AddPresentationContextProposal(aContext, "1.2.840.10008.1.2");
   }
   Require(aService.RequestAssociation(new Peer(aBytes)), "the association is accepted");
   const auto aServices = std::make_unique<Services>();
   for (const unsigned int aDecision : aDecisions)
   {
      DICOMCommandObject aCommand;
      if (aDecision & kIsResponse)
      {
         Request(*aServices, aService, aDecision & kContextBits);
      }
      else if (aService.ReadCommand(aCommand))
      {
         Serve(*aServices, aService, aDestination, aDecision & kContextBits, aCommand);
      }
      if (!aService.Connected())
      {
         break;
      }
   }
   return 0;
}
