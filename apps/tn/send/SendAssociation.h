// One association on which files are sent (C-STORE as SCU, PS3.4 B). Files go from the disk to the connection in
// pieces, a PDU at a time; none is ever held.
//
//    OutgoingFile aFile(theFile, anAssociation.GetBlockSize());
//    anAssociation.Send(aFile, anAssociation.FindRoute(theFile));
//    ...                            // what can be done while the peer stores it
//    anAssociation.ReadAnswer();
//
// What fails at the network throws NetworkFailure; the association is over then, and what was under way has been
// aborted.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "apps/tn/files/PlainFile.h"
#include "apps/tn/network/Watchdog.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/io/IOBuffer.h"

class OutputStream;
class Requester;
class StandardStorage;
struct SendBatch;
struct SendFile;

// A file that is about to be sent: opened, and its first piece read. Throws StreamIOException when it cannot be read or
// was changed since it was looked at.
class OutgoingFile
{
public:
   // theBlockSize is that of the first piece; with 0 it is read when it is wanted. theFile is borrowed.
   OutgoingFile(const SendFile& theFile, unsigned int theBlockSize);

   const SendFile& GetFile() const { return itsFile; }

   // The next piece of the dataset, at most theSize bytes; null at its end. Throws IncompleteDataset when the file
   // became shorter.
   std::unique_ptr<IOBuffer> NextPiece(unsigned int theSize);

private:
   std::unique_ptr<IOBuffer> ReadPiece(unsigned int theSize);

   const SendFile& itsFile;
   PlainFile itsPlainFile;
   UINT64 itsPosition;
   std::unique_ptr<IOBuffer> itsFirst;
};

// The peer takes no file of that kind.
class NotAccepted : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

class SendAssociation
{
public:
   // What a file is sent on.
   struct Route
   {
      unsigned char itsContextID;
      RWCString itsTransferSyntaxUID;
      bool itsIsCopied; // its bytes go as they are; otherwise it is encoded anew, decompressed if it has to be
   };
   struct Answer
   {
      UINT16 itsStatus;
      std::string itsComment; // the peer's, may be empty
   };

   // theRequester is borrowed. theProgress is told how many more bytes of a file are on their way.
   SendAssociation(const Requester& theRequester, std::function<void(UINT64 theBytes)> theProgress);
   ~SendAssociation();

   // Proposes the contexts of theBatch.
   void Open(const SendBatch& theBatch);

   // Throws NotAccepted, with what was proposed and how the peer answered.
   Route FindRoute(const SendFile& theFile) const;

   // Sends the whole file. Aborts the association when the file fails in the middle, as half of a dataset cannot be
   // called back, and throws IncompleteDataset or ExceptionBase.
   void Send(OutgoingFile& theFile, const Route& theRoute);

   // To the file sent last.
   Answer ReadAnswer();

   // Releases the association. Nothing is lost when that fails.
   void Close();

   bool IsOpen() const { return itsService.Connected() != 0; }

   // In which pieces the peer takes datasets; 0 before there is an association.
   unsigned int GetBlockSize() const { return itsBlockSize; }

private:
   class Output;

   void Copy(OutgoingFile& theFile, Output& theOutput);
   void Encode(const SendFile& theFile, const Route& theRoute, Output& theOutput);
   void Abort();
   [[noreturn]] void GiveUp(bool wasLate);
   void LearnWhy();

   const Requester& itsRequester;
   PDU_Service itsService;
   Watchdog itsWatchdog; // of the service's socket
   std::unique_ptr<StandardStorage> itsStorage;
   unsigned int itsBlockSize = 0;
   bool itsIsDecompressing = false;
   std::function<void(UINT64)> itsProgress;
};
