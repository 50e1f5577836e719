#include "talvenor/foundation/ExceptionBase.h"

namespace
{

std::unique_ptr<ExceptionBase> CloneOf(const ExceptionBase* theException)
{
   return std::unique_ptr<ExceptionBase>(theException ? theException->Clone() : nullptr);
}

} // namespace

ExceptionBase::ExceptionBase() = default;

ExceptionBase::ExceptionBase(const char* theMessage) : itsMessage(theMessage ? theMessage : "") {}

ExceptionBase::ExceptionBase(const ExceptionBase& theOther)
    : itsMessage(theOther.itsMessage), itsException(CloneOf(theOther.GetException()))
{}

ExceptionBase& ExceptionBase::operator=(const ExceptionBase& theOther)
{
   if (this != &theOther)
   {
      // Copied before anything is destroyed: theOther may be nested in this object.
      std::unique_ptr<ExceptionBase> anException = CloneOf(theOther.GetException());
      itsMessage = theOther.itsMessage;
      itsException = std::move(anException);
   }
   return *this;
}

ExceptionBase::~ExceptionBase() = default;

const char* ExceptionBase::why() const
{
   return itsMessage.c_str();
}

const char* ExceptionBase::Why() const
{
   return why();
}

const char* ExceptionBase::What() const
{
   return why();
}

RWCString ExceptionBase::ToString() const
{
   return RWCString(GetType()) + ": " + itsMessage;
}

void ExceptionBase::SetException(const ExceptionBase& theException)
{
   if (&theException != itsException.get())
   {
      itsException = CloneOf(&theException);
   }
}

void ExceptionBase::SetMessage(const char* theMessage)
{
   itsMessage = theMessage ? theMessage : "";
}
