#include "talvenor/foundation/Exceptions.h"

#include <gtest/gtest.h>

#include "talvenor/foundation/StreamIOException.h"

namespace
{

template <class Exception, class... Arguments>
std::unique_ptr<ExceptionBase> Make(Arguments... theArguments)
{
   return std::make_unique<Exception>(theArguments...);
}

struct TextCase
{
   std::unique_ptr<ExceptionBase> itsException;
   const char* itsType;
   const char* itsMessage;
};

TEST(Exceptions, NameThemselvesAndComposeTheirMessages)
{
   const TextCase aCases[] = {
       {Make<TalvenorException>(), "TalvenorException", ""},
       {Make<ConstructorError>("text"), "ConstructorError", "text"},
       {Make<TNRuntimeException>("text"), "TNRuntimeException", "text"},
       {Make<StreamIOException>("text", TN_UNSUPPORTED, 0), "StreamIOException", "text"},
       {Make<VRBufferLengthError>("text"), "VRBufferLengthError", "text"},
       {Make<InvalidValueTypeException>(255u, nullptr, 7), "InvalidValueTypeException", "Invalid type code: 0xff"},
       {Make<InvalidValueTypeException>(0u, "x.dic", 12), "InvalidValueTypeException",
        "\"x.dic\", line 12: Invalid type code: 0x0"},
       {Make<InvalidUIDTypeException>(0xFFFFFFFFu, "", 0), "InvalidUIDTypeException",
        "\"\", line 0: Invalid type code: 0xffffffff"},
       {Make<InvalidEntryDescriptionException>("W", "x.dic", 3), "InvalidEntryDescriptionException",
        "\"x.dic\", line 3: W"},
       {Make<InvalidEntryDescriptionException>("W", "", 3), "InvalidEntryDescriptionException", ", line 3: W"},
       {Make<InvalidEntryDescriptionException>("W", "x.dic", 0), "InvalidEntryDescriptionException", "\"x.dic\"W"},
       {Make<InvalidEntryDescriptionException>("W", "", -1), "InvalidEntryDescriptionException", "W"},
       {Make<VRAttributeNotFoundException>("text"), "VRAttributeNotFoundException", "text"},
       {Make<VRAttributeNotFoundException>("W", "ACME 1.0", UINT16{0x1a}), "VRAttributeNotFoundException",
        "W: Private Block: \"ACME 1.0\", Element 001a"},
       {Make<BadAllocException>(0u), "BadAllocException", "Memory allocation (Unspecified bytes requested) failed."},
       {Make<BadAllocException>(std::size_t{5000000000}), "BadAllocException",
        "Memory allocation (5000000000 bytes requested) failed."},
   };
   for (const TextCase& aCase : aCases)
   {
      const std::unique_ptr<ExceptionBase> aClone(aCase.itsException->Clone());
      for (const ExceptionBase* anException : {aCase.itsException.get(), aClone.get()})
      {
         EXPECT_STREQ(anException->GetType(), aCase.itsType);
         EXPECT_STREQ(anException->What(), aCase.itsMessage);
         const ExceptionBase& aThrown = *anException;
         const ExceptionBase& anOriginal = *aCase.itsException;
         EXPECT_EQ(typeid(aThrown), typeid(anOriginal)) << aCase.itsType;
      }
   }
}

TEST(Exceptions, CopiesOwnTheirNestedException)
{
   std::unique_ptr<StreamIOException> aSource = std::make_unique<StreamIOException>("m", TN_OPEN_FAILED, 13);
   aSource->SetException(TNRuntimeException("cause"));
   const StreamIOException aCopy(*aSource);
   StreamIOException anAssigned("other", TN_NO_ERROR, 0);
   anAssigned.SetException(TNRuntimeException("replaced"));
   anAssigned = *aSource;
   aSource.reset();
   for (const StreamIOException* anException : {&aCopy, static_cast<const StreamIOException*>(&anAssigned)})
   {
      EXPECT_EQ(anException->GetMessage(), "m");
      EXPECT_EQ(anException->GetResultCode(), TN_OPEN_FAILED);
      EXPECT_EQ(anException->GetSystemErrorCode(), 13);
      ASSERT_NE(anException->GetException(), nullptr);
      EXPECT_EQ(anException->GetException()->GetMessage(), "cause");
   }
}

TEST(Exceptions, AssignmentSurvivesSelfAndNestedSources)
{
   TNRuntimeException anException("outer");
   TNRuntimeException aMiddle("middle");
   aMiddle.SetException(TNRuntimeException("inner"));
   anException.SetException(aMiddle);

   const TNRuntimeException& anAlias = anException;
   anException = anAlias;
   EXPECT_EQ(anException.GetException()->GetMessage(), "middle");

   anException = dynamic_cast<const TNRuntimeException&>(*anException.GetException());
   EXPECT_EQ(anException.GetMessage(), "middle");
   EXPECT_EQ(anException.GetException()->GetMessage(), "inner");

   anException.SetException(anException); // nests a clone of itself
   EXPECT_EQ(anException.GetException()->GetMessage(), "middle");
   EXPECT_EQ(anException.GetException()->GetException()->GetMessage(), "inner");

   const ExceptionBase* aHeld = anException.GetException();
   anException.SetException(*aHeld);
   EXPECT_EQ(anException.GetException(), aHeld) << "the held object was replaced by a clone of itself";

   anException = TNRuntimeException("fresh");
   EXPECT_EQ(anException.GetException(), nullptr);
}

TEST(StreamIOException, TextHoldsTheWholeChainOfCausesAndTellsWhetherTheSystemErrorCounts)
{
   EXPECT_EQ(StreamIOException("m", TN_END_OF_FILE, -1).ToString(),
             "StreamIOException: ResultCode = End of file. (2) (System Error Code (may be WIN32 or errno) "
             "(May not be applicable) = -1) Message = m");
   StreamIOException aMiddle("b", TN_SYSTEM_CALL_FAILED, 2);
   aMiddle.SetException(TNRuntimeException("c"));
   StreamIOException anOuter("a", TN_SYSTEM_CALL_FAILED, 1);
   anOuter.SetException(aMiddle);
   EXPECT_EQ(anOuter.ToString(),
             "StreamIOException: ResultCode = Failed system call. (1) System Error Code (may be WIN32 or errno) = 1 "
             "Message = a\n"
             "  Nested Exception = StreamIOException: ResultCode = Failed system call. (1) System Error Code (may be "
             "WIN32 or errno) = 2 Message = b\n"
             "  Nested Exception = TNRuntimeException: c");
}

} // namespace
