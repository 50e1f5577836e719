// The root of the library's exceptions.
//
// An exception holds a message, which begins with the class and method that threw it ("FileStream::Read(): ..."), and
// may hold one nested exception: a layer that catches one exception and throws another keeps the first as the cause.
// Throw by value, catch by reference. The objects keep no shared state and may be used from any thread.
#pragma once

#include <memory>

#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API ExceptionBase
{
public:
   ExceptionBase();
   explicit ExceptionBase(const char* theMessage); // copied; null is an empty message
   ExceptionBase(const ExceptionBase& theOther);   // the nested exception is cloned
   ExceptionBase& operator=(const ExceptionBase& theOther);

   // Virtual operations in slot order.
   virtual ExceptionBase* Clone() const = 0; // a new object of the most-derived class; the caller owns it
   virtual ~ExceptionBase();
   virtual const char* why() const;         // the message, valid while the exception lives
   virtual const char* Why() const;         // what why() returns
   virtual const char* What() const;        // what why() returns
   virtual const char* GetType() const = 0; // the class's name
   virtual RWCString ToString() const;      // type, ": " and message, without the nested exception

   const RWCString& GetMessage() const { return itsMessage; }

   // Holds a clone of theException in place of the one held so far. The held object itself changes nothing.
   void SetException(const ExceptionBase& theException);
   // The nested exception, owned by this object, or null.
   const ExceptionBase* GetException() const { return itsException.get(); }

protected:
   // For constructors that compose their text.
   void SetMessage(const char* theMessage);

private:
   RWCString itsMessage;
   std::unique_ptr<ExceptionBase> itsException;
};

// Supplies Clone and GetType to a concrete exception class:
//
//    class ConstructorError : public ConcreteException<ConstructorError, TalvenorException>
//
// Derived is copyable and names itself in `static constexpr char kTypeName[]`.
template <class Derived, class Base>
class TALVENOR_API ConcreteException : public Base
{
public:
   using Base::Base;
   ExceptionBase* Clone() const override { return new Derived(static_cast<const Derived&>(*this)); }
   const char* GetType() const override { return Derived::kTypeName; }
};

// The base of everything that the library throws.
class TALVENOR_API TalvenorException : public ConcreteException<TalvenorException, ExceptionBase>
{
public:
   static constexpr char kTypeName[] = "TalvenorException";

   TalvenorException() = default;
   explicit TalvenorException(const char* theMessage) : ConcreteException(theMessage) {}
};
