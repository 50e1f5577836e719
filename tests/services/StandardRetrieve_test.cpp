#include "talvenor/services/StandardRetrieve.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "support/DefaultDictionary.h"
#include "support/Elements.h"
#include "support/MemoryAssociation.h"
#include "support/PiecewiseInputStream.h"
#include "support/QueryBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/services/RetrieveModels.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
using namespace QueryBytes;
using namespace std::string_literals;
using PDUBytes::PData;
using PDUBytes::PDV;

constexpr UINT32 kSOPInstanceUID = 0x00080018;
const std::string kStudyRoot = "1.2.840.10008.5.1.4.1.2.2.2";
const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";
const std::string kExplicit = MemoryAssociation::kExplicit;
const std::string kBaseline = "1.2.840.10008.1.2.4.50";
const std::string kRLE = "1.2.840.10008.1.2.5";

std::string MoveRequest(const std::string& theDestination, const std::string& theSOPClass = kStudyRoot)
{
   return Request(0x0021, theSOPClass, DatasetBytes().Element(0x0020000D, "UI", "1.2").Bytes(), theDestination);
}

std::string Counts(unsigned int theCompleted, unsigned int theFailed)
{
   return US(0x1021, theCompleted) + US(0x1022, theFailed) + US(0x1023, 0);
}
std::string Pending(unsigned int theRemaining, unsigned int theCompleted, unsigned int theFailed)
{
   return PData(
       Response(0x8021, kStudyRoot, 0xFF00, false, US(0x1020, theRemaining) + Counts(theCompleted, theFailed)));
}
std::string Final(unsigned int theStatus, const std::string& theMore = "")
{
   return PData(Response(0x8021, kStudyRoot, theStatus, false, theMore));
}
std::string Failures(unsigned int theStatus, unsigned int theCompleted, unsigned int theFailed,
                     const std::string& theInstances)
{
   const std::string aComment =
       theCompleted == 0 ? "All CSTORE sub-operations failed." : "One or more CSTORE sub-operations failed.";
   const std::string aMore = Comment(aComment) + Counts(theCompleted, theFailed);
   if (theInstances.empty())
   {
      return Final(theStatus, aMore);
   }
   const std::string aList = DatasetBytes().Element(0x00080058, "UI", Even(theInstances, '\0')).Bytes();
   return PData(Response(0x8021, kStudyRoot, theStatus, true, aMore)) + PData(PDV(1, 2, aList));
}

// What the destination sends.
std::string Accepting(const std::vector<PDUBytes::Answer>& theContexts)
{
   return PDUBytes::Acceptance(theContexts);
}
std::string Stored(unsigned int theStatus = 0, const std::string& theComment = "", unsigned char theContextID = 1)
{
   return PData(
       Command(US(0x0100, 0x8001) + US(0x0800, 0x0101) + US(0x0900, theStatus) + Comment(theComment), theContextID));
}

// Every connection is to a destination that sends the next of these; when there are no more, nobody listens.
class Destinations : public DULStreamFactory
{
public:
   DULStream* GetConnectedDULStream(const RWCString& theHost, const RWCString& thePort) override
   {
      itsCalls += theHost + ":" + thePort + " ";
      if (itsScripts.empty())
      {
         throw StreamIOException("nobody listens", TN_CONNECTION_REFUSED, 0);
      }
      const std::string aScript = itsScripts.front();
      itsScripts.pop_front();
      auto* const aStream = new MemoryDULStream(ScriptedChannel({aScript.begin(), aScript.end()}, false));
      itsReceived.push_back(aStream->ShareOutput());
      return aStream;
   }

   std::string Received(std::size_t theConnection) const
   {
      const std::vector<unsigned char> aBytes = itsReceived.at(theConnection)->Everything();
      return {aBytes.begin(), aBytes.end()};
   }

   std::deque<std::string> itsScripts;
   std::string itsCalls;
   std::vector<std::shared_ptr<MemoryChannel>> itsReceived;
};

DatasetBytes Header(const std::string& theInstance)
{
   return DatasetBytes().Element(0x00080016, "UI", Even(kCT, '\0')).Element(0x00080018, "UI", Even(theInstance, '\0'));
}

const std::string kPixels = DatasetBytes().Element(0x7FE00010, "OW", "1234").Bytes();
const std::string kFragments =
    DatasetBytes().Stated(0x7FE00010, "OB", DatasetBytes::kUndefined).Item(0).Item(4, "abcd").SequenceEnd().Bytes();
const std::string kBehindPixels = DatasetBytes().Element(0x7FE20010, "OB", "tail").Bytes();

struct File
{
   std::string itsBytes;
   std::string itsSyntax = kExplicit;
};

// Moves the instances that it is told to, from files in memory.
struct Retrieving : StudyRootRetrieve
{
   int DoQuery(DICOMDataObject&, int theModel, const RWCString&, RWTValOrderedVector<DICOMDataObject*>& theMatches,
               UINT16&, RWCString&, RWTValOrderedVector<MAttributeTag>&) override
   {
      EXPECT_EQ(theModel, 2);
      for (const std::string& anInstance : itsMatches)
      {
         theMatches.push_back(anInstance.empty() ? nullptr : new DICOMDataObject());
         if (!anInstance.empty())
         {
            theMatches.back()->DICOMObject::Push(BytesElement(kSOPInstanceUID, VRCode::UI, anInstance));
         }
      }
      return itsQueryResult;
   }
   int RetrieveHeader(const DICOMDataObject* theMatch, DICOMDataObject& theHeader, InputTransferSyntax*& theInput,
                      const TransferSyntaxType*& theSyntax, unsigned int& theSize) override
   {
      const auto aFile = itsFiles.find(TextOf(*theMatch, kSOPInstanceUID));
      if (aFile == itsFiles.end())
      {
         return 1;
      }
      const std::string& aBytes = aFile->second.itsBytes;
      theSyntax = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aFile->second.itsSyntax);
      theInput = theSyntax->CreateInputTransferSyntax(
          new PiecewiseInputStream(std::vector<unsigned char>(aBytes.begin(), aBytes.end())));
      theHeader.DICOMObject::Push(theInput->NextVR());
      theHeader.DICOMObject::Push(theInput->NextVR());
      if (itsDictionary)
      {
         theHeader.SetDataDictionary(*itsDictionary);
      }
      theSize = static_cast<unsigned int>(aBytes.size());
      return 0;
   }
   void DoStreamingDecompression(DICOMDataObject&, const TransferSyntaxType*, PixelDataFragmentInputStreamVR*,
                                 VR*& thePixels) override
   {
      thePixels = BytesElement(0x7FE00010, VRCode::OW, "1234");
   }
   bool IsMoveCancelled(PDU_Service&) override { return itsWanted-- == 0; }
   void CMoveProgressCallback(PDU_Service&, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier,
                              int theProgress) override
   {
      UINT16 aRemaining = 0;
      const bool hasCount = theResponse.GetUINT16(0, 0x1020, aRemaining) != 0;
      itsProgress += std::to_string(theProgress) + (hasCount ? "-" + std::to_string(aRemaining) : "") +
                     (theIdentifier.IsEmpty() ? "" : "(" + TextOf(theIdentifier, 0x00080058) + ")") + " ";
   }
   void CMoveServiceProgressCallback(PDU_Service& theService, const DICOMObject& theObject, unsigned int theSize,
                                     UINT16, const RWCString& theMessage, CMoveProgressType theProgress) override
   {
      const bool isSized = theProgress >= StoreAssociationFailed && theProgress <= SubOperationCompleted;
      EXPECT_EQ(theSize != 0, isSized) << theProgress;
      EXPECT_EQ(theObject.GetType() == DICOMObject::CommandObject,
                theProgress == ResponseFailed || theProgress == FinalResponseSent);
      itsProgress += std::to_string(theProgress) + (&theService == itsStoreService ? "s " : "m ");
      if (theProgress >= SubOperationFailed && theProgress <= StoreRefused)
      {
         itsMessages += theMessage + "\n";
      }
      if (itsOnProgress)
      {
         itsOnProgress(theService, theProgress);
      }
   }
   int GetMoveDestination(const RWCString& theTitle, RWCString& theCallingTitle, RWCString& theHost,
                          RWCString& thePort) override
   {
      theCallingTitle = "ARCHIVE";
      theHost = theTitle;
      thePort = "104";
      return theTitle != "NOBODY";
   }

   // One C-MOVE; the answers of this side.
   std::string Answer(const std::string& theRequest, PDU_Service& theStore)
   {
      itsStoreService = &theStore;
      MemoryAssociation aService(kStudyRoot, theRequest);
      DICOMCommandObject aCommand;
      EXPECT_TRUE(aService.ReadCommand(aCommand));
      itsIsAnswered = Read(aService, theStore, aCommand, itsStatus, itsComment, itsCompleted, itsFailed, itsWarning);
      itsCode = aService.GetResultCode();
      return aService.Sent();
   }

   std::vector<std::string> itsMatches;
   std::map<std::string, File> itsFiles;
   int itsQueryResult = 1;
   InstanceSpecificDataDictionary* itsDictionary = nullptr;
   int itsWanted = 99; // instances, before the requester cancels
   std::function<void(PDU_Service&, CMoveProgressType)> itsOnProgress;
   PDU_Service* itsStoreService = nullptr;
   std::string itsProgress;
   std::string itsMessages;
   UINT16 itsStatus = 1;
   RWCString itsComment;
   unsigned int itsCompleted = 9, itsFailed = 9, itsWarning = 9;
   int itsIsAnswered = -1;
   TNResultCode itsCode = TN_NO_ERROR;
};

std::vector<std::string> Split(const std::string& theText)
{
   std::istringstream aText(theText);
   std::vector<std::string> aParts;
   for (std::string aPart; std::getline(aText, aPart, ' ');)
   {
      aParts.push_back(aPart);
   }
   return aParts;
}

TEST(StandardRetrieve, TellsBothPeersHowSubOperationsEnd)
{
   const std::string anAcceptance = Accepting({{1, 0, kExplicit}});
   const std::string aTwoOK = anAcceptance + Stored() + Stored();
   const std::string aNoContext = "Unable to find usable presentation context.\n";
   const std::string aNoFile = "Retrieval of image file \"header\" failed. Check error log.\n";
   const std::string aBroken = "Caught exception while creating output transfer syntax:CStore error: ";
   const struct
   {
      const char* itsName;
      const char* itsMatches; // instances 1.1 to 1.3 are whole, 1.7 has no SOP class, 1.8 is cut, 1.9 has no file
      std::deque<std::string> itsDestinations;
      UINT16 itsStatus;
      std::string itsAnswer;
      std::string itsProgress;
      std::string itsMessages;
      const char* itsCalls = "DEST:104 ";
      int itsWanted = 99;
   } kCases[] = {
       {"two are stored",
        "1.1 1.2",
        {aTwoOK},
        0,
        Pending(1, 1, 0) + Pending(0, 2, 0) + Final(0, Counts(2, 0)),
        "1m 6s 7s 11s 6s 7s 11s 12m ",
        ""},
       {"nothing matches", "", {}, 0, Final(0), "1m 12m ", "", ""},
       {"warnings count as stored",
        "1.1 1.2",
        {anAcceptance + Stored(0xB000) + Stored(0xB007)},
        0,
        Pending(1, 1, 0) + Pending(0, 2, 0) + Final(0, Counts(2, 0)),
        "1m 6s 7s 11s 6s 7s 11s 12m ",
        ""},
       {"the second is refused",
        "1.1 1.2",
        {anAcceptance + Stored() + Stored(0xA700, "full")},
        0xB000,
        Pending(1, 1, 0) + Pending(0, 1, 1) + Failures(0xB000, 1, 1, "1.2"),
        "1m 6s 7s 11s 6s 7s 10s 12m ",
        "DICOM Error Comment: full\n"},
       {"the first is refused",
        "1.1 1.2 1.3",
        {anAcceptance + Stored(0x0122)},
        0xC004,
        Pending(2, 0, 1) + Failures(0xC004, 0, 3, "1.1\\1.2\\1.3"),
        "1m 6s 7s 10s 12m ",
        "DICOM Error Comment: \n"},
       {"an answer without status",
        "1.1",
        {anAcceptance + PData(Command(US(0x0100, 0x8001)))},
        0xC004,
        Pending(0, 0, 1) + Failures(0xC004, 0, 1, "1.1"),
        "1m 6s 7s 10s 12m ",
        "DICOM Error Comment: \n"},
       {"the destination falls silent",
        "1.1 1.2 1.3",
        {anAcceptance + Stored()},
        0xB000,
        Pending(2, 1, 0) + Failures(0xB000, 1, 2, "1.2\\1.3"),
        "1m 6s 7s 11s 6s 7s 9s 12m ",
        "CStore error: " + TNResult::Describe(TN_TRANSPORT_TIMED_OUT) + "\n"},
       {"nobody listens",
        "1.1 1.2",
        {},
        0xC004,
        Pending(1, 0, 1) + Pending(0, 0, 2) + Failures(0xC004, 0, 2, "1.1\\1.2"),
        "1m 6s 8s 6s 8s 12m ",
        aNoContext + aNoContext,
        "DEST:104 DEST:104 "},
       {"rejected, then somebody listens",
        "1.1 1.2",
        {PDUBytes::Rejection(1, 1, 1), anAcceptance + Stored()},
        0xB000,
        Pending(1, 0, 1) + Pending(0, 1, 1) + Failures(0xB000, 1, 1, "1.1"),
        "1m 6s 8s 6s 7s 11s 12m ",
        aNoContext,
        "DEST:104 DEST:104 "},
       {"a file breaks off in its pixels",
        "1.8 1.1",
        {anAcceptance + Stored(), anAcceptance + Stored()},
        0xB000,
        Pending(1, 0, 1) + Pending(0, 1, 1) + Failures(0xB000, 1, 1, "1.8"),
        "1m 6s 7s 8s 6s 7s 11s 12m ",
        aBroken + TNResult::Describe(TN_END_OF_FILE) + "\n",
        "DEST:104 DEST:104 "},
       {"no file, and no SOP class",
        "1.9 1.7 1.1",
        {anAcceptance + Stored()},
        0xB000,
        Pending(2, 0, 1) + Pending(1, 0, 2) + Pending(0, 1, 2) + Failures(0xB000, 1, 2, "1.9\\1.7"),
        "1m 6s 8s 6s 8s 6s 7s 11s 12m ",
        aNoFile + "Retrieved image file \"header\" is missing SOPInstanceUID or SOPClassUID.\n"},
       {"no match at all",
        " 1.1",
        {anAcceptance + Stored()},
        0xB000,
        Pending(1, 0, 1) + Pending(0, 1, 1) + Failures(0xB000, 1, 1, ""),
        "1m 6s 8s 6s 7s 11s 12m ",
        aNoFile},
       {"cancelled after the first",
        "1.1 1.2 1.3",
        {anAcceptance + Stored()},
        0xFE00,
        Pending(2, 1, 0) + Final(0xFE00, Counts(1, 0)),
        "1m 6s 7s 11s 12m ",
        "",
        "DEST:104 ",
        1},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Destinations aDestinations;
      aDestinations.itsScripts = aCase.itsDestinations;
      PDU_Service aStore(aDestinations);
      Retrieving aRetrieve;
      aRetrieve.itsMatches = Split(aCase.itsMatches);
      aRetrieve.itsWanted = aCase.itsWanted;
      for (const char* const anInstance : {"1.1", "1.2", "1.3"})
      {
         aRetrieve.itsFiles[anInstance] = {Header(anInstance).Bytes() + kPixels};
      }
      aRetrieve.itsFiles["1.7"] = {Header("1.7").Bytes().substr(8 + kCT.size() + 1) + kPixels};
      aRetrieve.itsFiles["1.8"] = {Header("1.8").Bytes() + kPixels.substr(0, kPixels.size() - 1)};
      EXPECT_EQ(aRetrieve.Answer(MoveRequest("DEST"), aStore), aCase.itsAnswer);
      EXPECT_EQ(aRetrieve.itsProgress, aCase.itsProgress);
      EXPECT_EQ(aRetrieve.itsMessages, aCase.itsMessages);
      EXPECT_EQ(aDestinations.itsCalls, aCase.itsCalls);
      EXPECT_EQ(aRetrieve.itsStatus, aCase.itsStatus);
      EXPECT_EQ(aRetrieve.itsIsAnswered, 1);
   }
}

TEST(StandardRetrieve, RefusesWhatCannotBegin)
{
   const struct
   {
      const char* itsName;
      std::string itsDestination;
      int itsQueryResult;
      UINT16 itsStatus;
      const char* itsComment;
      const char* itsProgress;
   } kCases[] = {
       {"no destination", "", 1, 0xC003, "Destination for CMOVE not specified in command.", "1m 4s "},
       {"unknown destination", "NOBODY", 1, 0xA801, "Move destination unknown.", "1m 4s "},
       {"failed query", "DEST", 0, 0xC001, "Query error.", "1m 3s "},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Destinations aDestinations;
      PDU_Service aStore(aDestinations);
      Retrieving aRetrieve;
      aRetrieve.itsQueryResult = aCase.itsQueryResult;
      EXPECT_EQ(aRetrieve.Answer(MoveRequest(aCase.itsDestination), aStore),
                Final(aCase.itsStatus, Comment(aCase.itsComment)));
      EXPECT_EQ(aRetrieve.itsProgress, aCase.itsProgress);
      EXPECT_EQ(aRetrieve.itsStatus, aCase.itsStatus);
      EXPECT_EQ(aRetrieve.itsComment, aCase.itsComment);
      EXPECT_EQ(aRetrieve.itsIsAnswered, 0);
      EXPECT_EQ(aDestinations.itsCalls, "");
   }
   Destinations aDestinations;
   PDU_Service aStore(aDestinations);
   Retrieving aRetrieve;
   EXPECT_EQ(aRetrieve.Answer(MoveRequest("DEST", "1.2.840.10008.5.1.4.1.2.1.2"), aStore), "");
   EXPECT_EQ(aRetrieve.itsCode, TN_SOP_CLASS_MISMATCH);
}

// The requester is gone, and those who wait at the destination get their images all the same.
TEST(StandardRetrieve, GoesOnWithoutItsRequester)
{
   Destinations aDestinations;
   aDestinations.itsScripts = {Accepting({{1, 0, kExplicit}}) + Stored() + Stored()};
   PDU_Service aStore(aDestinations);
   Retrieving aRetrieve;
   aRetrieve.itsMatches = {"1.1", "1.2"};
   aRetrieve.itsFiles = {{"1.1", {Header("1.1").Bytes()}}, {"1.2", {Header("1.2").Bytes()}}};
   PDU_Service* aMove = nullptr;
   aRetrieve.itsOnProgress = [&](PDU_Service& theService, StandardRetrieve::CMoveProgressType theProgress) {
      aMove = theProgress == StandardRetrieve::IdentifierRead ? &theService : aMove;
      if (theProgress == StandardRetrieve::SubOperationBegins)
      {
         aMove->Abort(PDU_Service::AbortSourceServiceUser, PDU_Service::AbortReasonNotSpecified);
         aMove->WaitForTransportCloseOrTimeout();
      }
   };
   EXPECT_EQ(aRetrieve.Answer(MoveRequest("DEST"), aStore), PDUBytes::Abort(0, 0));
   EXPECT_EQ(aRetrieve.itsProgress, "1m 6s 7s 11s 6s 7s 11s 5m ");
   EXPECT_EQ(aRetrieve.itsIsAnswered, 0);
}

TEST(StandardRetrieve, ReusesTheAssociationWithTheSameDestination)
{
   const std::string anAcceptance = Accepting({{1, 0, kExplicit}});
   Destinations aDestinations;
   aDestinations.itsScripts = {anAcceptance + Stored() + Stored() + PDUBytes::ReleaseResponse(),
                               anAcceptance + Stored()};
   PDU_Service aStore(aDestinations);
   Retrieving aRetrieve;
   aRetrieve.itsMatches = {"1.1"};
   aRetrieve.itsFiles["1.1"] = {Header("1.1").Bytes() + kPixels};
   const std::string anAnswer = Pending(0, 1, 0) + Final(0, Counts(1, 0));
   for (const char* const aDestination : {"ONE", "ONE", "OTHER"})
   {
      EXPECT_EQ(aRetrieve.Answer(MoveRequest(aDestination), aStore), anAnswer) << aDestination;
   }
   EXPECT_EQ(aDestinations.itsCalls, "ONE:104 OTHER:104 ");
   EXPECT_EQ(PDUBytes::Describe(aDestinations.Received(0)), "RQ DATA DATA RELEASE");
   EXPECT_EQ(PDUBytes::Describe(aDestinations.Received(1)), "RQ DATA");
   EXPECT_TRUE(aStore.Connected());

   for (int i = 0; i < 2; ++i) // nobody listens: the second time least of all may the one before get it
   {
      aRetrieve.Answer(MoveRequest("THIRD"), aStore);
      EXPECT_FALSE(aStore.Connected());
   }
   EXPECT_EQ(aDestinations.itsCalls, "ONE:104 OTHER:104 THIRD:104 THIRD:104 ");
   EXPECT_EQ(PDUBytes::Describe(aDestinations.Received(1)), "RQ DATA RELEASE");
}

// What arrives at the destination behind the command set.
TEST(StandardRetrieve, SendsWhatIsStored)
{
   std::istringstream aDictionary("PrivateCreator = CORVAN0\n0009,30,US,Reconstructed Image,ReconstImageFlag,1,1\n");
   PrivateDataDictionaryCatalog aCatalog;
   aCatalog.Add(new MPrivateDataDictionary(aDictionary));
   MDataDictionary aPublic;
   InstanceSpecificDataDictionary aKnowing(aPublic, aCatalog);

   const std::string aHeader = Header("1.1").Bytes();
   const std::string aFlag =
       DatasetBytes().Element(0x00090010, "LO", "CORVAN0 ").Element(0x00091030, "US", "\1\0"s).Bytes();
   const struct
   {
      const char* itsName;
      std::string itsSyntax;
      std::string itsPixels;
      bool isKnowing; // the flag
      std::vector<PDUBytes::Answer> itsContexts;
      std::string itsSent; // empty: nothing whole
      unsigned char itsContextID = 1;
   } kCases[] = {
       {"native", kExplicit, kPixels + kBehindPixels, false, {{1, 0, kExplicit}}, aHeader + kPixels + kBehindPixels},
       {"without pixels", kExplicit, "", false, {{1, 0, kExplicit}}, aHeader},
       {"compressed, taken as it is",
        kBaseline,
        kFragments,
        false,
        {{1, 0, kBaseline}, {3, 0, kExplicit}},
        aHeader + kFragments},
       {"RLE, taken native",
        kRLE,
        kFragments + kBehindPixels,
        false,
        {{1, 4, kRLE}, {3, 0, kExplicit}},
        aHeader + kPixels + kBehindPixels,
        3},
       {"JPEG, taken native",
        kBaseline,
        kFragments,
        true,
        {{1, 4, kBaseline}, {3, 0, kExplicit}},
        aHeader + aFlag + kPixels,
        3},
       {"JPEG without pixels", kBaseline, "", false, {{1, 4, kBaseline}, {3, 0, kExplicit}}, aHeader, 3},
       {"the flag is not known", kBaseline, kFragments, false, {{1, 4, kBaseline}, {3, 0, kExplicit}}, "", 3},
   };
   int aNumber = 0;
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Destinations aDestinations;
      aDestinations.itsScripts = {Accepting(aCase.itsContexts) + Stored(0, "", aCase.itsContextID)};
      PDU_Service aStore(aDestinations);
      Retrieving aRetrieve;
      aRetrieve.itsMatches = {"1.1"};
      aRetrieve.itsFiles["1.1"] = {aHeader + aCase.itsPixels, aCase.itsSyntax};
      aRetrieve.itsDictionary = aCase.isKnowing ? &aKnowing : nullptr;
      // What is proposed depends on what this process knows of a title.
      aRetrieve.Answer(MoveRequest("DEST" + std::to_string(++aNumber)), aStore);
      const std::string aReceived = aDestinations.Received(0);
      const std::string aDataset = PDV(aCase.itsContextID, 2, aCase.itsSent);
      const bool isWhole =
          aReceived.size() > aDataset.size() && aReceived.substr(aReceived.size() - aDataset.size()) == aDataset;
      EXPECT_EQ(isWhole, !aCase.itsSent.empty()) << aRetrieve.itsMessages;
      EXPECT_EQ(aRetrieve.itsCompleted, aCase.itsSent.empty() ? 0u : 1u);
      EXPECT_EQ(PDUBytes::Describe(aReceived).find("ABORT") != std::string::npos, aCase.itsSent.empty());
   }
}

TEST(StandardRetrieve, TellsEveryResponse)
{
   const struct
   {
      const char* itsName;
      std::string itsResponses;
      int itsResult;
      const char* itsProgress;
   } kCases[] = {
       {"all completed", Pending(1, 1, 0) + Pending(0, 2, 0) + Final(0), 1, "1 8-1 8-0 7 9 "},
       {"some failed", Pending(0, 1, 1) + Failures(0xB000, 1, 1, "1.2.3"), 0, "1 8-0 5(1.2.3) 9(1.2.3) "},
       {"a warning is no pending", Final(0xFF01), 0, "1 5 9 "},
       {"cancelled", Final(0xFE00), 0, "1 5 9 "},
       {"another service", PData(Command(US(0x0100, 0x8020) + US(0x0900, 0))), 0, "1 3 9 "},
       {"no status", PData(Command(US(0x0100, 0x8021))), 0, "1 4 9 "},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kStudyRoot, aCase.itsResponses);
      Retrieving aRetrieve;
      DICOMDataObject anIdentifier;
      EXPECT_EQ(aRetrieve.StandardRetrieve::Write(aService, anIdentifier, AETitle("DEST")), aCase.itsResult)
          << aCase.itsName;
      EXPECT_EQ(aRetrieve.itsProgress, aCase.itsProgress) << aCase.itsName;
   }
}
} // namespace
