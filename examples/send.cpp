// Asks a peer whether it is there (C-ECHO), and sends it a file (C-STORE).
//
//    send HOST PORT CALLED-TITLE FILE
#include <iostream>

#include <talvenor/association/PDU_Service.h>
#include <talvenor/dataset/DICOMCommandObject.h>
#include <talvenor/dataset/DICOMDataObject.h>
#include <talvenor/foundation/StreamIOException.h>
#include <talvenor/services/StorageClasses.h>
#include <talvenor/services/Verification.h>
#include <talvenor/transfer/TransferSyntaxType.h>
#include <talvenor/ul/SocketDULStreamFactory.h>

namespace
{
int Fail(const char* theWhat, const PDU_Service& theService)
{
   std::cerr << "send: " << theWhat << ": " << TNResult::Describe(theService.GetResultCode()) << "\n";
   return 1;
}
} // namespace

int main(int theCount, char** theArguments)
{
   DICOMDataObject aDataset;
   RWCString aSOPClass;
   if (theCount != 5 || !aDataset.LoadFromFile(theArguments[4]) || !aDataset.GetString(0x0008, 0x0016, aSOPClass))
   {
      std::cerr << "send: no file to send\n";
      return 1;
   }
   aDataset.RemoveGroup(0x0002); // meta information belongs to the file

   SocketDULStreamFactory& aFactory = SocketDULStreamFactory::GetInstance();
   PDU_Service aService(aFactory);
   aService.SetLocalAddress("EXAMPLE");
   aService.SetRemoteAddress(theArguments[3]);
   aService.AddPresentationContextProposal("1.2.840.10008.1.1", TransferSyntaxType::TSLEImplicitUID);
   aService.AddPresentationContextProposal(aSOPClass, TransferSyntaxType::TSLEExplicitUID);
   aService.AddPresentationContextProposal(aSOPClass, TransferSyntaxType::TSLEImplicitUID);
   try
   {
      if (!aService.RequestAssociation(aFactory.GetConnectedDULStream(theArguments[1], theArguments[2])))
      {
         return Fail("no association", aService);
      }
   }
   catch (const StreamIOException& anException)
   {
      std::cerr << "send: no connection: " << anException.why() << "\n";
      return 1;
   }

   aService.SetTimeout(30); // seconds, for each read
   if (!Verification().Write(aService))
   {
      return Fail("no answer to C-ECHO", aService);
   }
   DICOMCommandObject aResponse;
   if (!RunTimeClassStorage(aSOPClass).Write(aService, aDataset, aResponse, 0))
   {
      return Fail("no answer to C-STORE", aService);
   }
   if (const UINT16 aStatus = aResponse.GetUINT16(0x0000, 0x0900); aStatus != 0)
   {
      std::cerr << "send: the peer answers with status " << std::hex << aStatus << "H\n";
      return 1;
   }
   std::cout << "stored\n";
   return aService.Close() ? 0 : Fail("not released", aService);
}
