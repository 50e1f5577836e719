#include "talvenor/services/StandardQuery.h"

#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/CapturedErrorLog.h"
#include "support/Elements.h"
#include "support/MemoryAssociation.h"
#include "support/QueryBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/services/QueryModels.h"

namespace
{
using namespace QueryBytes;
using PDUBytes::PData;
using PDUBytes::PDV;

constexpr UINT32 kPatientID = 0x00100020;
const std::string kStudyRoot = "1.2.840.10008.5.1.4.1.2.2.1";
const std::string kNoModel = "1.2.840.10008.5.1.4.1.2.4.1";

std::string PatientID(const std::string& theValue)
{
   return DatasetBytes().Element(kPatientID, "LO", theValue).Bytes();
}

std::string Match(unsigned int theStatus, const std::string& thePatient, const std::string& theMore = "",
                  const std::string& theSOPClass = kStudyRoot)
{
   return PData(Response(0x8020, theSOPClass, theStatus, true, theMore) + PDV(1, 2, PatientID(thePatient)));
}
std::string Final(unsigned int theStatus, const std::string& theComment = "",
                  const std::string& theSOPClass = kStudyRoot)
{
   return PData(Response(0x8020, theSOPClass, theStatus, false, Comment(theComment)));
}

using Matches = RWTValOrderedVector<DICOMDataObject*>;

template <class Model>
struct Querying : Model
{
   int DoQuery(DICOMDataObject& theIdentifier, int theModel, const RWCString& thePeer, Matches& theMatches,
               UINT16& theStatus, RWCString& theComment, RWTValOrderedVector<MAttributeTag>&) override
   {
      itsModel = theModel;
      itsAsked = thePeer + " " + TextOf(theIdentifier, kPatientID);
      return itsAnswer(theMatches, theStatus, theComment);
   }
   void CFindProgressCallback(PDU_Service&, DICOMCommandObject&, DICOMDataObject& theIdentifier,
                              int theProgress) override
   {
      const bool hasMatch = theProgress == QueryPending || theProgress == QueryPendingWarning;
      itsProgress += std::to_string(theProgress) + (hasMatch ? TextOf(theIdentifier, kPatientID) : "") + " ";
   }
   std::function<int(Matches&, UINT16&, RWCString&)> itsAnswer;
   int itsModel = 0;
   std::string itsAsked;
   std::string itsProgress;
};

// "A-B" are two matches, "A--B" has a null pointer between them.
void Append(Matches& theMatches, const std::string& thePatients)
{
   std::istringstream aText(thePatients);
   for (std::string aPatient; std::getline(aText, aPatient, '-');)
   {
      theMatches.push_back(aPatient.empty() ? nullptr : new DICOMDataObject());
      if (!aPatient.empty())
      {
         theMatches.back()->DICOMObject::Push(TextElement(kPatientID, aPatient));
      }
   }
}

TEST(StandardQuery, AnswersWhatDoQueryFinds)
{
   const std::string anError = "Internal program error at CFind service provider.";
   const struct
   {
      const char* itsName;
      const char* itsMatches;
      int itsResult; // of DoQuery; -1 throws
      UINT16 itsStatus;
      const char* itsComment;
      bool isAnswered;
      unsigned int itsMatchCount;
      std::string itsAnswer;
   } kCases[] = {
       {"three matches", "P1-P2-P3", 1, 0, "never told", true, 3,
        Match(0xFF00, "P1") + Match(0xFF00, "P2") + Match(0xFF00, "P3") + Final(0)},
       {"none", "", 1, 0, "", true, 0, Final(0)},
       {"optional keys not supported", "P1-P2", 1, 0xFF01, "some keys", true, 2,
        Match(0xFF01, "P1", Comment("some keys")) + Match(0xFF01, "P2", Comment("some keys")) + Final(0)},
       {"a warning of the host", "P1", 1, 0xB000, "told", true, 1, Match(0xFF00, "P1", Comment("told")) + Final(0)},
       {"failed without a word", "P1-P2", 0, 0, "", true, 0, Final(0xC001, "Query error.")},
       {"failed with a comment", "", 0, 0, "why", true, 0, Final(0xC001, "why")},
       {"failed with a status", "", 0, 0xA700, "", true, 0, Final(0xA700)},
       {"failed with a pending status", "", 0, 0xFF00, "", true, 0, Final(0xC001, "Query error.")},
       {"exception", "P1", -1, 0xFF01, "never told", true, 0, Final(0xC001, "Query error.")},
       {"null between matches", "P1--P3", 1, 0, "", false, 3, Match(0xFF00, "P1") + Final(0xC002, anError)},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const CapturedErrorLog aLog;
      MemoryAssociation aService(kStudyRoot, Request(0x0020, kStudyRoot, PatientID("P*")));
      Querying<StudyRootQuery> aQuery;
      aQuery.itsAnswer = [&](auto& theMatches, auto& theStatus, auto& theComment) {
         Append(theMatches, aCase.itsMatches);
         theStatus = aCase.itsStatus;
         theComment = aCase.itsComment;
         return aCase.itsResult < 0 ? throw std::logic_error("x") : aCase.itsResult;
      };
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      UINT16 aStatus = 1;
      RWCString aComment = "x";
      unsigned int aCount = 1;
      EXPECT_EQ(aQuery.Read(aService, aCommand, aStatus, aComment, aCount), aCase.isAnswered);
      EXPECT_EQ(aService.Sent(), aCase.itsAnswer);
      EXPECT_EQ(aCount, aCase.itsMatchCount);
      const std::string aFinal = aService.Sent().substr(aService.Sent().size() - Final(aStatus, aComment).size());
      EXPECT_EQ(aFinal, Final(aStatus, aComment)) << "what is told to the host is what was sent";
      EXPECT_EQ(aQuery.itsModel, 2);
      EXPECT_EQ(aService.GetResultCode(), aCase.isAnswered ? TN_NO_ERROR : TN_INTERNAL_ERROR);
      EXPECT_EQ(aLog.Text().find("StandardQuery::Read:  null pointer in response list at index 1") != std::string::npos,
                !aCase.isAnswered);
   }
}

template <class Model>
void ExpectModel(const std::string& theSOPClass, int theModel)
{
   SCOPED_TRACE(theSOPClass);
   Querying<Model> aQuery;
   aQuery.itsAnswer = [](auto& theMatches, auto&, auto&) {
      Append(theMatches, "P1");
      return 1;
   };
   UINT16 aStatus = 0;
   RWCString aComment;
   unsigned int aCount = 0;
   DICOMCommandObject aCommand;
   MemoryAssociation aService(theSOPClass, Request(0x0020, theSOPClass, PatientID("P*")) +
                                               Request(0x0020, kNoModel, PatientID("P*")) +
                                               Request(0x0021, theSOPClass, PatientID("P*")));
   ASSERT_TRUE(aService.ReadCommand(aCommand));
   EXPECT_TRUE(aQuery.Read(aService, aCommand, aStatus, aComment, aCount));
   EXPECT_EQ(aQuery.itsModel, theModel);
   const std::string anAnswer = Match(0xFF00, "P1", "", theSOPClass) + Final(0, "", theSOPClass);
   EXPECT_EQ(aService.Sent(), anAnswer);
   for (const TNResultCode aCode : {TN_SOP_CLASS_MISMATCH, TN_COMMAND_NOT_SUPPORTED})
   {
      ASSERT_TRUE(aService.ReadCommand(aCommand)) << "behind an identifier that nobody read";
      EXPECT_FALSE(aQuery.Read(aService, aCommand, aStatus, aComment, aCount));
      EXPECT_EQ(aService.GetResultCode(), aCode);
   }
   EXPECT_EQ(aService.Sent(), anAnswer) << "no answer";

   MemoryAssociation aRequester(theSOPClass, Match(0xFF00, "P1", "", theSOPClass) + Final(0, "", theSOPClass));
   DICOMDataObject anIdentifier;
   anIdentifier.DICOMObject::Push(TextElement(kPatientID, "P*"));
   EXPECT_TRUE(aQuery.Write(aRequester, anIdentifier));
   EXPECT_EQ(aQuery.itsProgress, "1 8P1 7 9 ");
   EXPECT_NE(aRequester.Sent().find(theSOPClass), std::string::npos);
   EXPECT_EQ(aRequester.Sent().substr(aRequester.Sent().size() - PatientID("P*").size()), PatientID("P*"));
}

TEST(StandardQuery, HasAClassForEachModel)
{
   ExpectModel<PatientRootQuery>("1.2.840.10008.5.1.4.1.2.1.1", 1);
   ExpectModel<StudyRootQuery>("1.2.840.10008.5.1.4.1.2.2.1", 2);
   ExpectModel<PatientStudyOnlyQuery>("1.2.840.10008.5.1.4.1.2.3.1", 3);
   ExpectModel<ModalityWorklistQuery>("1.2.840.10008.5.1.4.31", 4);
}

struct AnotherModel : StandardQuery
{
   int uGetUID(UID& theUID) const override
   {
      theUID = UID(kNoModel);
      return 1;
   }
};

TEST(StandardQuery, KnowsNoOtherModel)
{
   const CapturedErrorLog aLog;
   MemoryAssociation aService(kNoModel, Request(0x0020, kNoModel, PatientID("P*")));
   Querying<AnotherModel> aQuery;
   DICOMCommandObject aCommand;
   UINT16 aStatus = 1;
   RWCString aComment = "x";
   unsigned int aCount = 1;
   ASSERT_TRUE(aService.ReadCommand(aCommand));
   EXPECT_FALSE(aQuery.Read(aService, aCommand, aStatus, aComment, aCount));
   EXPECT_EQ(aService.GetResultCode(), TN_INTERNAL_ERROR);
   EXPECT_EQ(aService.Sent() + aComment + std::to_string(aStatus + aCount), "0");
   EXPECT_NE(aLog.Text().find("StandardQuery::Read:  query model unknown for SOP class UID = " + kNoModel),
             std::string::npos);
}

TEST(StandardQuery, TellsEveryResponse)
{
   const std::string aMatch = Match(0xFF00, "P1");
   const struct
   {
      const char* itsName;
      std::string itsResponses;
      int itsResult;
      const char* itsProgress;
      TNResultCode itsCode;
   } kCases[] = {
       {"none matches", Final(0), 1, "1 7 9 ", TN_NO_ERROR},
       {"both kinds of pending", aMatch + Match(0xFF01, "P2") + Match(0xFF00, "P3") + Final(0), 1, "1 8P1 6P2 8P3 7 9 ",
        TN_NO_ERROR},
       {"pending without a match", aMatch + Final(0xFF00) + Final(0), 1, "1 8P1 8(none) 7 9 ", TN_NO_ERROR},
       {"cancelled", aMatch + Final(0xFE00), 0, "1 8P1 5 9 ", TN_NO_ERROR},
       {"failed", Final(0xA700), 0, "1 5 9 ", TN_NO_ERROR},
       {"warning", Final(0xB000), 0, "1 5 9 ", TN_NO_ERROR},
       {"no status", PData(Command(US(0x0100, 0x8020))), 0, "1 4 9 ", TN_NO_ERROR},
       {"another message", PData(Command(US(0x0100, 0x8021) + US(0x0900, 0))), 0, "1 3 9 ", TN_COMMAND_NOT_SUPPORTED},
       {"identifier breaks off",
        PData(Response(0x8020, kStudyRoot, 0xFF00, true, "") + PDV(1, 2, PatientID("P1").substr(0, 9))), 0, "1 3 9 ",
        TN_END_OF_FILE},
       {"silence", aMatch, 0, "1 8P1 3 9 ", TN_TRANSPORT_TIMED_OUT},
       {"release", aMatch + PDUBytes::ReleaseRequest(), 0, "1 8P1 3 9 ", TN_PEER_RELEASED},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kStudyRoot, aCase.itsResponses);
      Querying<StudyRootQuery> aQuery;
      DICOMDataObject anIdentifier;
      anIdentifier.DICOMObject::Push(TextElement(kPatientID, "P*"));
      EXPECT_EQ(aQuery.Write(aService, anIdentifier), aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(aQuery.itsProgress, aCase.itsProgress) << aCase.itsName;
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode) << aCase.itsName;
   }
   MemoryAssociation aService(kNoModel);
   Querying<StudyRootQuery> aQuery;
   DICOMDataObject anIdentifier;
   EXPECT_FALSE(aQuery.Write(aService, anIdentifier));
   EXPECT_EQ(aQuery.itsProgress, "1 2 9 ") << "no context to ask on";
}
} // namespace
