// The small vocabulary of the public interfaces: fixed-width numbers, the names under which strings and containers
// appear in signatures, and the error classes of the utility library that older hosts throw from thread functions.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "talvenor/Export.h"

using UINT8 = std::uint8_t;
using UINT16 = std::uint16_t;
using INT16 = std::int16_t;
using UINT32 = std::uint32_t;
using INT32 = std::int32_t;
using UINT64 = std::uint64_t;
using INT64 = std::int64_t;
using FLOAT = float;
using DOUBLE = double;

using RWCString = std::string;

// A vector that keeps the order of insertion.
template <class T>
using RWTValOrderedVector = std::vector<T>;

// The error classes that a host's thread function may let escape; MThreadHandler reports each under its own name.
class TALVENOR_API RWxmsg : public std::exception
{
public:
   explicit RWxmsg(std::string theMessage) : itsMessage(std::move(theMessage)) {}
   const char* why() const noexcept { return itsMessage.c_str(); }
   const char* what() const noexcept override { return itsMessage.c_str(); }

private:
   std::string itsMessage;
};

class TALVENOR_API RWxalloc : public RWxmsg
{
public:
   using RWxmsg::RWxmsg;
};

class TALVENOR_API RWInternalErr : public RWxmsg
{
public:
   using RWxmsg::RWxmsg;
};

class TALVENOR_API RWBoundsErr : public RWInternalErr
{
public:
   using RWInternalErr::RWInternalErr;
};

class TALVENOR_API RWExternalErr : public RWxmsg
{
public:
   using RWxmsg::RWxmsg;
};

class TALVENOR_API RWFileErr : public RWExternalErr
{
public:
   using RWExternalErr::RWExternalErr;
};

class TALVENOR_API RWStreamErr : public RWExternalErr
{
public:
   using RWExternalErr::RWExternalErr;
};
