#include "talvenor/services/Verification.h"

#include <gtest/gtest.h>

#include "support/CommandBytes.h"
#include "support/MemoryAssociation.h"
#include "talvenor/dataset/DICOMCommandObject.h"

namespace
{
using namespace CommandBytes;
using namespace std::string_literals;

const std::string kVerification = "1.2.840.10008.1.1";

std::string Message(const std::string& theElements)
{
   return PDUBytes::PData(PDUBytes::PDV(1, 3, CommandSet(theElements)));
}
std::string Field(unsigned int theField)
{
   return US(0x0100, theField);
}
const std::string kClass = Element(0x0002, kVerification + "\0"s);

TEST(Verification, AnswersAsProvider)
{
   const struct
   {
      const char* itsName;
      std::string itsCommand;
      int itsResult;
      TNResultCode itsCode;
      std::string itsAnswer;
   } kCases[] = {
       {"request", kClass + Field(0x0030) + US(0x0110, 9), 1, TN_NO_ERROR,
        Message(kClass + Field(0x8030) + US(0x0120, 9) + US(0x0800, 0x0101) + US(0x0900, 0))},
       {"response", kClass + Field(0x8030), 1, TN_NO_ERROR, ""},
       {"no class", Field(0x0030), 0, TN_NO_AFFECTED_SOP_CLASS, ""},
       {"another class", Element(0x0002, "1.2.840.10008.1.11") + Field(0x0030), 0, TN_SOP_CLASS_MISMATCH, ""},
       {"class too long", Element(0x0002, kVerification + std::string(61, '1')) + Field(0x0030), 0,
        TN_SOP_CLASS_MISMATCH, ""},
       {"another message", kClass + Field(0x0001), 0, TN_COMMAND_NOT_SUPPORTED, ""},
       {"no message", kClass, 0, TN_COMMAND_NOT_SUPPORTED, ""},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MemoryAssociation aService(kVerification, Message(aCase.itsCommand));
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      EXPECT_EQ(Verification().Read(aService, aCommand), aCase.itsResult);
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode);
      EXPECT_EQ(aService.Sent(), aCase.itsAnswer);
      EXPECT_TRUE(aService.Connected());
   }
}

TEST(Verification, AsksAsUser)
{
   const struct
   {
      const char* itsName;
      std::string itsAnswer;
      int itsResult;
      TNResultCode itsCode;
   } kCases[] = {
       {"success", Message(kClass + Field(0x8030) + US(0x0900, 0)), 1, TN_NO_ERROR},
       {"status not examined", Message(Field(0x8030) + US(0x0900, 0x0122)), 1, TN_NO_ERROR},
       {"another message", Message(kClass + Field(0x8001) + US(0x0900, 0)), 0, TN_COMMAND_NOT_SUPPORTED},
       {"silence", "", 0, TN_TRANSPORT_TIMED_OUT},
       {"abort", PDUBytes::Abort(0, 0), 0, TN_PEER_ABORTED},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kVerification, aCase.itsAnswer);
      EXPECT_EQ(Verification().Write(aService), aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode) << aCase.itsName;
   }
}
} // namespace
