// What streams, decoders, encoders and PDU readers throw: a message with the result code and the operating system's
// error number, so that the association boundary can turn it back into a result without loss.
#pragma once

#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/foundation/TNResult.h"

class TALVENOR_API StreamIOException : public ConcreteException<StreamIOException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "StreamIOException";

   // theSystemErrorCode is errno after a failed call, 0 where no system call was involved.
   StreamIOException(const char* theMessage, TNResultCode theResultCode, int theSystemErrorCode)
       : ConcreteException(theMessage), itsResultCode(theResultCode), itsSystemErrorCode(theSystemErrorCode)
   {}

   // Type, result code with its text, system error, message, and the text of the nested exception if there is one.
   RWCString ToString() const override;

   TNResultCode GetResultCode() const { return itsResultCode; }
   int GetSystemErrorCode() const { return itsSystemErrorCode; }

private:
   TNResultCode itsResultCode;
   int itsSystemErrorCode;
};
