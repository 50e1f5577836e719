// PDUs and items of the upper layer composed byte by byte (PS3.8 9.3), also with lengths that lie, and the stream that
// reads them. PDUBytes.h composes whole associations.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "talvenor/ul/PDUInputStream.h"
#include "tests/support/MemoryDULStream.h"

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes theFirst, const Bytes& theSecond)
{
   theFirst.insert(theFirst.end(), theSecond.begin(), theSecond.end());
   return theFirst;
}

inline Bytes AsBytes(const std::string& theText)
{
   return Bytes(theText.begin(), theText.end());
}

// theLength is the length field; -1: what is true.
inline Bytes PDUOf(unsigned char theType, const Bytes& theBody, long theLength = -1)
{
   const auto aLength = theLength < 0 ? theBody.size() : static_cast<std::size_t>(theLength);
   const auto aByte = [&](int theShift) { return static_cast<unsigned char>(aLength >> theShift); };
   return Bytes{theType, 0, aByte(24), aByte(16), aByte(8), aByte(0)} + theBody;
}

inline Bytes ItemOfPDU(unsigned char theType, const Bytes& theBody, long theLength = -1)
{
   const auto aLength = theLength < 0 ? theBody.size() : static_cast<std::size_t>(theLength);
   return Bytes{theType, 0, static_cast<unsigned char>(aLength >> 8), static_cast<unsigned char>(aLength)} + theBody;
}

inline Bytes ItemOfPDU(unsigned char theType, const char* theText)
{
   return ItemOfPDU(theType, AsBytes(theText));
}

// The 68 bytes before the items of A-ASSOCIATE-RQ and -AC.
inline Bytes AssociateFields(const std::string& theCalled = "CALLED", const std::string& theCalling = "CALLING")
{
   const auto aTitle = [](std::string theTitle) {
      theTitle.resize(16, ' ');
      return AsBytes(theTitle);
   };
   return Bytes{0, 1, 0, 0} + aTitle(theCalled) + aTitle(theCalling) + Bytes(32, 0);
}

// What a peer sends, before it closes the connection.
class PeerBytes
{
public:
   explicit PeerBytes(const Bytes& theBytes) : itsTransport(ScriptedChannel(theBytes)), itsStream(itsTransport) {}
   PeerBytes(const PeerBytes&) = delete;
   PeerBytes& operator=(const PeerBytes&) = delete;

   PDUInputStream& Stream() { return itsStream; }
   MemoryDULStream& Transport() { return itsTransport; }
   unsigned int Unread() { return itsTransport.Input().UnreadCount(); }

private:
   MemoryDULStream itsTransport;
   PDUInputStream itsStream;
};
