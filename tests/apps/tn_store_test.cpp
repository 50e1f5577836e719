// tn serve --store: what is kept, what is refused and with what, and that nothing else is left.
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/ServedNode.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
namespace fs = std::filesystem;

const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";
const std::string kPalette = "1.2.840.10008.5.1.4.39.1";
const std::string kImplicit = "1.2.840.10008.1.2";

// A peer that sends whatever bytes as data set of a C-STORE.
class StoringPeer
{
public:
   explicit StoringPeer(const ServedNode& theNode) : itsService(SocketDULStreamFactory::GetInstance())
   {
      itsService.SetLocalAddress("PEER");
      itsService.SetRemoteAddress("NODE");
      itsService.AddPresentationContextProposal(kCT, kImplicit);
      itsService.AddPresentationContextProposal(kPalette, kImplicit);
      itsService.RequestAssociation(
          SocketDULStreamFactory::GetInstance().GetConnectedDULStream("127.0.0.1", theNode.Port()));
   }
   ~StoringPeer() { itsService.Close(); }

   // The status of the answer, 0xFFFF for none.
   int Store(const std::string& theClass, const std::string& theInstance, const std::string& theBytes,
             unsigned char theContext = 1)
   {
      const RunTimeClassStorage aStorage(theClass);
      DICOMCommandObject aCommand;
      aStorage.Compose(aCommand, itsService, UID(theClass), UID(""), 0, "");
      auto* const anInstance = new VR(0x0000, 0x1000);
      anInstance->SetData(theInstance.data(), static_cast<UINT32>(theInstance.size()), '\0');
      aCommand.Push(anInstance);
      if (!itsService.Write(aCommand, theContext, 0))
      {
         return 0xFFFF;
      }
      const std::unique_ptr<DICOMMessageOutputStream> aMessage(itsService.CreateDICOMMessageOutputStream());
      aMessage->SetMessageType(PDVMessageType::DataMessage);
      aMessage->SetPresentationContextID(theContext);
      aMessage->Write(reinterpret_cast<const unsigned char*>(theBytes.data()), static_cast<unsigned>(theBytes.size()));
      aMessage->FinishMessageEvenIfEmpty();
      aMessage->FinishPDU();
      aMessage->FlushOutput();
      DICOMCommandObject aResponse;
      UINT16 aStatus = 0xFFFF;
      if (aStorage.ReadResponse(itsService, aResponse))
      {
         aResponse.GetUINT16(0, 0x0900, aStatus);
      }
      return aStatus;
   }
   int Store(const std::string& theInstance, const std::string& theBytes) { return Store(kCT, theInstance, theBytes); }

private:
   PDU_Service itsService;
};

std::string Padded(std::string theText, char thePad)
{
   return theText.size() % 2 != 0 ? theText + thePad : theText;
}

DatasetBytes Head(const std::string& theClass, const std::string& theInstance, const std::string& theStudy,
                  const std::string& theSeries)
{
   DatasetBytes aBytes(Encoding::Implicit);
   aBytes.Element(0x00080016, "UI", Padded(theClass, '\0')).Element(0x00080018, "UI", Padded(theInstance, '\0'));
   aBytes.Element(0x00100010, "PN", "DOE^JANE").Element(0x00100020, "LO", "4711");
   if (!theStudy.empty())
   {
      aBytes.Element(0x0020000D, "UI", Padded(theStudy, '\0')).Element(0x0020000E, "UI", Padded(theSeries, '\0'));
   }
   return aBytes;
}

std::string Image(const std::string& theInstance, const std::string& thePixels = "pixels")
{
   return Head(kCT, theInstance, "1.2", "1.2.3").Element(0x7FE00010, "OW", thePixels).Bytes();
}

std::string Nested(unsigned int theLevels)
{
   DatasetBytes aBytes = Head(kCT, "1.9", "1.2", "1.2.3");
   for (unsigned int i = 0; i < theLevels; ++i)
   {
      aBytes.Sequence(0x00400275).Item();
   }
   return aBytes.Bytes();
}

std::set<std::string> FilesIn(const std::string& theFolder)
{
   std::set<std::string> aFiles;
   for (const fs::directory_entry& anEntry : fs::recursive_directory_iterator(theFolder))
   {
      const std::string aPath = fs::relative(anEntry.path(), theFolder).string();
      if (anEntry.is_regular_file() && !aPath.starts_with("index.sqlite") && aPath != "lock")
      {
         aFiles.insert(aPath);
      }
   }
   return aFiles;
}

class TnStore : public testing::Test
{
protected:
   std::vector<std::string> Options(std::vector<std::string> theMore = {}) const
   {
      theMore.insert(theMore.end(), {"--store", itsFolder.File("archive")});
      return theMore;
   }
   std::string Archive(const std::string& thePath = "") const { return itsFolder.File("archive/" + thePath); }

   TemporaryDirectory itsFolder;
};

TEST_F(TnStore, KeepsWhatIsWholeByteForByteAndRefusesTheRestWithAStatus)
{
   const struct
   {
      const char* itsName;
      std::string itsClass;
      std::string itsInstance;
      std::string itsBytes;
      int itsStatus;
      unsigned char itsContext = 1;
   } kCases[] = {
       {"an image", kCT, "1.2.3.1", Image("1.2.3.1"), 0x0000},
       {"one of 3 MB", kCT, "1.2.3.2", Image("1.2.3.2", std::string(3000000, 'p')), 0x0000},
       {"long private value", kCT, "1.2.3.3",
        Head(kCT, "1.2.3.3", "1.2", "1.2.3")
            .Element(0x00290010, "LO", "PRIVATE ")
            .Element(0x00291000, "OB", std::string(1000000, 'x'))
            .Bytes(),
        0x0000},
       {"padding behind the data set", kCT, "1.2.3.4",
        Image("1.2.3.4") + DatasetBytes(Encoding::Implicit).Element(0xFFFCFFFC, "OB", "\0\0\0\0").Bytes(), 0x0000},
       {"a palette has no study", kPalette, "1.2.3.5", Head(kPalette, "1.2.3.5", "", "").Bytes(), 0x0000, 3},
       {"empty", kCT, "1.9", "", 0xC000},
       {"text", kCT, "1.9", "this is no data set at all", 0xC000},
       {"cut in a value", kCT, "1.9", Image("1.9").substr(0, Image("1.9").size() - 3), 0xC000},
       {"cut in an element's header", kCT, "1.9", Image("1.9").substr(0, Image("1.9").size() - 12), 0xC000},
       {"length of nearly 4 GiB", kCT, "1.9",
        Head(kCT, "1.9", "1.2", "1.2.3").Stated(0x00400000, "LO", 0xFFFFFFFE, "ab").Bytes(), 0xC000},
       {"pixels of nearly 4 GiB", kCT, "1.9",
        Head(kCT, "1.9", "1.2", "1.2.3").Stated(0x7FE00010, "OW", 0xFFFFFFFE, "ab").Bytes(), 0xC000},
       {"sequence without end", kCT, "1.9", Nested(1), 0xC000},
       {"50,000 levels", kCT, "1.9", Nested(50000), 0xC000},
       {"delimiter at the top", kCT, "1.9", DatasetBytes(Encoding::Implicit).ItemEnd().Bytes() + Image("1.9"), 0xC000},
       {"another class than the context's", kPalette, "1.9", Image("1.9"), 0x0122},
       {"another class in the data set", kCT, "1.9", Head(kPalette, "1.9", "1.2", "1.2.3").Bytes(), 0xA900},
       {"another instance in the data set", kCT, "1.9", Image("1.8"), 0xA900},
       {"no study", kCT, "1.9", Head(kCT, "1.9", "", "").Bytes(), 0xA900},
       {"study leads upwards", kCT, "1.9", Head(kCT, "1.9", "../../1", "1.2.3").Bytes(), 0xA900},
       {"series is absolute", kCT, "1.9", Head(kCT, "1.9", "1.2", "/tmp/x").Bytes(), 0xA900},
       {"instance leads upwards", kCT, "../1.9", Image("../1.9"), 0x0117},
       {"instance with a needless 0", kCT, "1.09", Image("1.09"), 0x0117},
       {"instance without name", kCT, "", Image(""), 0x0117},
   };
   ServedNode aNode(Options());
   StoringPeer aPeer(aNode);
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(aPeer.Store(aCase.itsClass, aCase.itsInstance, aCase.itsBytes, aCase.itsContext), aCase.itsStatus)
          << aCase.itsName;
      if (aCase.itsStatus == 0)
      {
         const std::string aPath = aCase.itsContext == 1 ? "1.2/1.2.3/" : "no-study/" + kPalette + "/";
         const std::string aFile = ReadFile(Archive(aPath + aCase.itsInstance + ".dcm"));
         EXPECT_EQ(aFile.substr(128, 4), "DICM") << aCase.itsName;
         EXPECT_TRUE(aFile.ends_with(aCase.itsBytes)) << aCase.itsName;
      }
   }
   const std::set<std::string> aFiles = {"1.2/1.2.3/1.2.3.1.dcm", "1.2/1.2.3/1.2.3.2.dcm", "1.2/1.2.3/1.2.3.3.dcm",
                                         "1.2/1.2.3/1.2.3.4.dcm", "no-study/" + kPalette + "/1.2.3.5.dcm"};
   EXPECT_EQ(FilesIn(Archive()), aFiles);
   EXPECT_LE(LinesOf(aNode.Log()), 22u); // however many refusals there are
   EXPECT_EQ(aNode.Stop(), 0);
   EXPECT_EQ(Tn("index '" + Archive() + "'").itsOutput, "5 instances indexed\n");
}

TEST_F(TnStore, TheFirstOfSeveralWithOneUIDStays)
{
   ServedNode aNode(Options());
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5", "first!")), 0x0000);
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5", "first!")), 0x0000);
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5", "other!")), 0x0111);
   const std::string anotherStudy = Head(kCT, "1.5", "1.3", "1.3.1").Element(0x7FE00010, "OW", "first!").Bytes();
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", anotherStudy), 0x0111);
   EXPECT_TRUE(ReadFile(Archive("1.2/1.2.3/1.5.dcm")).ends_with("first!"));

   std::vector<int> aStatuses(16);
   std::vector<std::thread> aPeers;
   for (std::size_t i = 0; i < aStatuses.size(); ++i)
   {
      aPeers.emplace_back([&, i] {
         aStatuses[i] = StoringPeer(aNode).Store("1.6", Image("1.6", std::string(100000, i % 2 != 0 ? 'a' : 'b')));
      });
   }
   for (std::thread& aPeer : aPeers)
   {
      aPeer.join();
   }
   const std::string aStored = ReadFile(Archive("1.2/1.2.3/1.6.dcm"));
   for (std::size_t i = 0; i < aStatuses.size(); ++i)
   {
      const bool isStored = aStored.ends_with(Image("1.6", std::string(100000, i % 2 != 0 ? 'a' : 'b')));
      EXPECT_EQ(aStatuses[i], isStored ? 0x0000 : 0x0111) << i;
   }
   EXPECT_EQ(aNode.Stop(), 0);
   EXPECT_EQ(FilesIn(Archive()).size(), 2u);
}

TEST_F(TnStore, AnotherOneReplacesTheFirstWhereThatIsAskedFor)
{
   ServedNode aNode(Options({"--duplicates", "replace", "--fsync", "none"}));
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5", "first!")), 0x0000);
   const std::string anotherStudy = Head(kCT, "1.5", "1.3", "1.3.1").Element(0x7FE00010, "OW", "other!").Bytes();
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", anotherStudy), 0x0000);
   EXPECT_EQ(aNode.Stop(), 0);
   EXPECT_EQ(FilesIn(Archive()), std::set<std::string>{"1.3/1.3.1/1.5.dcm"});
}

TEST_F(TnStore, AStartRepairsWhatAnUncleanEndLeft)
{
   {
      ServedNode aNode(Options());
      EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5")), 0x0000);
      EXPECT_EQ(StoringPeer(aNode).Store("1.6", Image("1.6")), 0x0000);
      EXPECT_EQ(StoringPeer(aNode).Store("1.7", Image("1.7")), 0x0000);
   }
   const std::string aWhole = ReadFile(Archive("1.2/1.2.3/1.6.dcm"));
   fs::remove(Archive("index.sqlite"));
   fs::remove(Archive("1.2/1.2.3/1.5.dcm"));
   WriteFile(Archive("1.2/1.2.3/1.7.dcm"), aWhole); // not what its name says
   WriteFile(Archive("1.2/1.2.3/1.8.dcm"), aWhole.substr(0, aWhole.size() - 2));
   WriteFile(Archive("incoming/17-4"), "half an instance");
   {
      ServedNode aNode(Options());
      EXPECT_EQ(StoringPeer(aNode).Store("1.7", Image("1.7")), 0x0000);
   }
   EXPECT_EQ(FilesIn(Archive()), (std::set<std::string>{"1.2/1.2.3/1.6.dcm", "1.2/1.2.3/1.7.dcm",
                                                        "damaged/1.2,1.2.3,1.7.dcm", "damaged/1.2,1.2.3,1.8.dcm"}));
   EXPECT_EQ(Tn("index --json --check '" + Archive() + "'").itsOutput, "{\"indexed\":2,\"leftOut\":0}\n");
}

TEST_F(TnStore, CommandsLearnWhatCameFromTheirEnvironmentOnly)
{
   const std::string aNote = itsFolder.File("note");
   ServedNode aNode(Options({"--on-object", "echo \"$TN_AET $TN_INSTANCE $(basename $TN_FILE)\" >> " + aNote,
                             "--on-study", "echo \"study $TN_STUDY\" >> " + aNote, "--quiet-for", "0"}));
   EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5")), 0x0000);
   for (int i = 0; i < 500 && LinesOf(ReadFile(aNote)) < 2; ++i)
   {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
   }
   EXPECT_TRUE(Contains(ReadFile(aNote), "PEER 1.5 1.5.dcm\n")) << ReadFile(aNote);
   EXPECT_TRUE(Contains(ReadFile(aNote), "study 1.2\n")) << ReadFile(aNote);
}

TEST_F(TnStore, FailsAndAbortsAsItIsToldTo)
{
   {
      ServedNode aNode(Options({"--fail", "A700"}));
      EXPECT_EQ(StoringPeer(aNode).Store("1.5", Image("1.5")), 0xA700);
   }
   ServedNode aNode(Options({"--abort-after", "1"}));
   StoringPeer aPeer(aNode);
   EXPECT_EQ(aPeer.Store("1.5", Image("1.5")), 0x0000);
   EXPECT_EQ(aPeer.Store("1.6", Image("1.6")), 0xFFFF);
   EXPECT_EQ(Tn("serve --port 0 --store '" + Archive() + "'").itsCode, 4); // the folder is in use
   EXPECT_EQ(aNode.Stop(), 0);
   EXPECT_EQ(FilesIn(Archive()), std::set<std::string>{"1.2/1.2.3/1.5.dcm"});
}
} // namespace
