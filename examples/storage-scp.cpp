// A storage provider: answers C-ECHO, and keeps every instance that it is sent as FOLDER/<SOP Instance UID>.dcm.
//    storage-scp PORT FOLDER
#include <filesystem>
#include <iostream>
#include <thread>

#include <talvenor/talvenor.h>

class FolderStorage : public UnknownStorage // of every SOP class
{
public:
   int DoStore(DICOMDataObject& theDataset, InputTransferSyntax& theInput, const RWCString&, const RWCString&,
               UINT16& theStatus, RWCString& theComment, RWTValOrderedVector<MAttributeTag>&) override
   {
      while (VR* aVR = theInput.NextVR())
      {
         theDataset.Push(aVR);
      }
      RWCString anID;
      if (theInput.IsCut() || !theDataset.GetString(0x0008, 0x0018, anID) || anID.empty() ||
          anID.find_first_not_of("0123456789.") != RWCString::npos) // it is about to be the name of a file
      {
         theStatus = 0xC000; // cannot understand
         return 0;
      }
      const RWCString aPart = MUIDFactory::GetInstance().GetUID() + ".part"; // a file is there whole or not at all
      const UID aSyntax(theInput.GetTransferSyntaxType().GetUID());
      TNResultCode aResult = TN_NO_ERROR;
      int aSystemError = 0;
      theStatus = 0xA700; // out of resources
      theComment = "cannot write the file";
      return theDataset.SaveToFile(aPart, GivenOrLittleEndianExplicitFile, "", aResult, aSystemError, "", "",
                                   &aSyntax) &&
             std::rename(aPart.c_str(), (anID + ".dcm").c_str()) == 0;
   }
};

void Serve(Socket::Handle theConnection)
{
   auto aStream = std::make_unique<SocketDULStream>();
   aStream->ManageConnection(theConnection);
   PDU_Service aService(SocketDULStreamFactory::GetInstance());
   DICOMCommandObject aCommand;
   aService.WaitForAssociationRequest(aStream.release());
   while (aService.ReadCommand(aCommand)) // until the peer releases, aborts or has been silent for too long
   {
      DICOMDataObject aDataset;
      if (!Verification().Read(aService, aCommand) && !FolderStorage().Read(aService, aCommand, aDataset))
      {
         aService.AbortAndWaitForTransportCloseOrTimeout(PDU_Service::AbortSourceServiceUser,
                                                         PDU_Service::AbortReasonNotSpecified);
      }
   }
}

int main(int theCount, char** theArguments)
{
   TNXInitializer::SetDefaultSocketTimeout(60); // seconds
   Socket aListener;
   if (theCount != 3 || !aListener.Listen(theArguments[1], 16))
   {
      std::cerr << "storage-scp: cannot listen; usage: storage-scp PORT FOLDER\n";
      return 1;
   }
   std::filesystem::current_path(theArguments[2]);
   while (aListener.Accept(0)) // without a limit of time
   {
      std::thread(Serve, aListener.UnmanageConnection()).detach();
   }
}
