#include "talvenor/services/StandardStorage.h"

#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/CommandBytes.h"
#include "support/Elements.h"
#include "support/MemoryAssociation.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"

namespace
{
using namespace CommandBytes;
using namespace std::string_literals;
using PDUBytes::PData;
using PDUBytes::PDV;

const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";
const std::string kMR = "1.2.840.10008.5.1.4.1.1.4";

const std::string kDataset =
    DatasetBytes().Element(0x00080016, "UI", kCT + "\0"s).Element(0x00080018, "UI", "1.2.3\0"s).Bytes();

std::string Request(const std::string& theClass)
{
   const std::string aClass = theClass.empty() ? "" : Element(0x0002, theClass + "\0"s);
   return PData(PDV(1, 3, CommandSet(aClass + US(0x0100, 0x0001) + US(0x0110, 5) + US(0x0800, 0x0102))) +
                PDV(1, 2, kDataset));
}

std::string Answer(unsigned int theStatus, const std::string& theComment = "", const std::string& theClass = kCT)
{
   return PData(PDV(1, 3,
                    CommandSet(Element(0x0002, theClass + "\0"s) + US(0x0100, 0x8001) + US(0x0120, 5) +
                               US(0x0800, 0x0101) + US(0x0900, theStatus) +
                               (theComment.empty() ? "" : Element(0x0902, theComment)) + Element(0x1000, ""))));
}

// Does with an instance what the test says.
template <class Storage>
struct Storing : Storage
{
   using Hook = std::function<int(InputTransferSyntax&, UINT16&, RWCString&)>;
   explicit Storing(Hook theHook) : itsHook(std::move(theHook)) {}
   int DoStore(DICOMDataObject&, InputTransferSyntax& theInput, const RWCString&, const RWCString&, UINT16& theStatus,
               RWCString& theComment, RWTValOrderedVector<MAttributeTag>&) override
   {
      return itsHook(theInput, theStatus, theComment);
   }
   Hook itsHook;
};

TEST(StandardStorage, AnswersWhatDoStoreSays)
{
   using CT = Storing<CTStorage>;
   const CT::Hook aKeep = [](auto& theInput, auto&, auto&) {
      DICOMDataObject aDataset(TNEndian::LittleEndian);
      while (VR* aVR = theInput.NextVR())
      {
         aDataset.Push(aVR);
      }
      return TextOf(aDataset, 0x00080018) == "1.2.3";
   };
   CT aKeeper(aKeep);
   CT aWarner([](auto&, auto& theStatus, auto& theComment) {
      theStatus = 0xB000;
      theComment = "never told";
      return 1;
   });
   CT aRefuser([](auto&, auto&, auto& theComment) {
      theComment = "never told";
      return 0;
   });
   CT aFullDisk([](auto&, auto& theStatus, auto& theComment) {
      theStatus = 0xA700;
      theComment = "full";
      return 0;
   });
   CT aThrower([](auto&, auto&, auto&) -> int { throw std::logic_error("x"); });
   Storing<UnknownStorage> anyClass([](auto&, auto&, auto&) { return 1; });
   RunTimeClassStorage aRunTime(kCT);
   const struct
   {
      const char* itsName;
      StandardStorage& itsStorage;
      std::string itsClass;
      TNResultCode itsCode;
      std::string itsAnswer;
   } kCases[] = {
       {"stored", aKeeper, kCT, TN_NO_ERROR, Answer(0)},
       {"stored with a warning", aWarner, kCT, TN_NO_ERROR, Answer(0)},
       {"refused", aRefuser, kCT, TN_NO_ERROR, Answer(0xC006, "Storage error.")},
       {"refused with a status", aFullDisk, kCT, TN_NO_ERROR, Answer(0xA700, "full")},
       {"exception", aThrower, kCT, TN_NO_ERROR, Answer(0xC006, "Storage error - exception occurred in DoStore.")},
       {"run-time class", aRunTime, kCT, TN_NO_ERROR, Answer(0xC006, "Storage error.")},
       {"any class", anyClass, kMR, TN_NO_ERROR, Answer(0, "", kMR)},
       {"another class", aKeeper, kMR, TN_SOP_CLASS_MISMATCH, ""},
       {"no class", anyClass, "", TN_SOP_CLASS_MISMATCH, ""},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MemoryAssociation aService(kCT, Request(aCase.itsClass) + Request(kCT));
      DICOMCommandObject aCommand;
      DICOMDataObject aDataset(TNEndian::LittleEndian);
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      EXPECT_EQ(aCase.itsStorage.Read(aService, aCommand, aDataset), aCase.itsCode == TN_NO_ERROR);
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode);
      EXPECT_EQ(aService.Sent(), aCase.itsAnswer);
      EXPECT_TRUE(aService.ReadCommand(aCommand)) << "behind a data set that nobody read";
   }
}

TEST(StandardStorage, KnowsWhichStatusesMeanStored)
{
   const struct
   {
      const char* itsName;
      std::string itsAnswer;
      int itsResult;
      TNResultCode itsCode;
   } kCases[] = {
       {"success", Answer(0), 1, TN_NO_ERROR},
       {"coercion", Answer(0xB000), 1, TN_NO_ERROR},
       {"elements discarded", Answer(0xB006), 1, TN_NO_ERROR},
       {"mismatch", Answer(0xB007), 1, TN_NO_ERROR},
       {"another warning", Answer(0xB001), 0, TN_NO_ERROR},
       {"out of resources", Answer(0xA700), 0, TN_NO_ERROR},
       {"no status", PData(PDV(1, 3, CommandSet(US(0x0100, 0x8001)))), 0, TN_NO_STATUS},
       {"another message", PData(PDV(1, 3, CommandSet(US(0x0100, 0x8030)))), 0, TN_COMMAND_NOT_SUPPORTED},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kCT, aCase.itsAnswer);
      DICOMDataObject aDataset(TNEndian::LittleEndian);
      aDataset.Push(BytesElement(0x00080016, VRCode::UI, kCT));
      aDataset.Push(BytesElement(0x00080018, VRCode::UI, "1.2.3"));
      EXPECT_EQ(RunTimeClassStorage(kCT).Write(aService, aDataset), aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode) << aCase.itsName;
   }
}

// What a transmission of these elements sends, without the command set.
std::string DataSent(RunTimeClassStorage& theStorage, bool isEmpty)
{
   MemoryAssociation aService(kCT, Answer(0));
   OutputTransferSyntax& anOutput = theStorage.GetDatasetOutputTransferSyntax(aService, 1, kCT, "1.2.3", 0, AETitle());
   if (!isEmpty)
   {
      anOutput.SaveVR(BytesElement(0x00080016, VRCode::UI, kCT));
      anOutput.SaveVR(BytesElement(0x00080018, VRCode::UI, "1.2.3"));
   }
   EXPECT_EQ(aService.Sent(), "") << "the request shares the PDU";
   const RunTimeClassStorage aCopy = theStorage; // has no part in it
   theStorage.FinishDatasetTransmission();
   theStorage.FinishDatasetTransmission();
   DICOMCommandObject aResponse;
   EXPECT_TRUE(theStorage.ReadResponse(aService, aResponse));
   const std::string aSent = aService.Sent();
   const std::size_t aCommandSize = 6 + static_cast<unsigned char>(aSent.at(9)) + 4;
   return aSent.substr(aCommandSize);
}

TEST(StandardStorage, StreamsADatasetBehindItsRequest)
{
   RunTimeClassStorage aStorage(kCT);
   EXPECT_EQ(DataSent(aStorage, false), PDV(1, 2, kDataset));
   EXPECT_EQ(DataSent(aStorage, true), PDV(1, 2, "")) << "the peer waits for an empty one too";
}

TEST(StandardStorage, ATransmissionThatCannotBeginSendsNothing)
{
   const struct
   {
      const char* itsName;
      unsigned char itsContextID;
      const char* itsClass;
      TNResultCode itsCode;
      const char* itsSyntax = MemoryAssociation::kExplicit;
   } kCases[] = {
       {"context that was not accepted", 3, "1.2.840.10008.5.1.4.1.1.2", TN_INTERNAL_ERROR},
       {"SOP class of another service", 1, "1.2.840.10008.5.1.4.1.1.4", TN_SOP_CLASS_MISMATCH},
       {"syntax that is not registered", 1, "1.2.840.10008.5.1.4.1.1.2", TN_TRANSFER_SYNTAX_UNSUPPORTED, "1.2.3.4"},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kCT, "", aCase.itsSyntax);
      {
         RunTimeClassStorage aStorage(kCT);
         try
         {
            aStorage.GetDatasetOutputTransferSyntax(aService, aCase.itsContextID, aCase.itsClass, "1.2.3", 0,
                                                    AETitle());
            ADD_FAILURE() << aCase.itsName;
         }
         catch (const StreamIOException& anException)
         {
            EXPECT_EQ(anException.GetResultCode(), aCase.itsCode) << aCase.itsName;
            EXPECT_EQ(aService.GetResultCode(), aCase.itsCode) << aCase.itsName;
         }
      }
      EXPECT_EQ(aService.Sent(), "") << aCase.itsName;
   }
}

TEST(StandardStorage, OutlivesItsAssociation)
{
   RunTimeClassStorage aStorage(kCT);
   {
      MemoryAssociation aService(kCT);
      aStorage.GetDatasetOutputTransferSyntax(aService, 1, kCT, "1.2.3", 0, AETitle())
          .SaveVR(BytesElement(0x00080018, VRCode::UI, "1.2.3"));
   }
   EXPECT_THROW(aStorage.FinishDatasetTransmission(), StreamIOException);
   EXPECT_NO_THROW(aStorage.FinishDatasetTransmission());
}
} // namespace
