// Reads a socket as an InputStream. After the end of the connection every read returns 0 until Reset.
#pragma once

#include "talvenor/io/InputStream.h"

class Socket;

class TALVENOR_API SocketInputStream final : public InputStream
{
public:
   explicit SocketInputStream(Socket& theSocket) : itsSocket(theSocket) {} // borrowed; must outlive this object
   ~SocketInputStream() override;

   // Waits until all theCount bytes have arrived; fewer only at the end of the connection. Other failures throw with
   // the socket's result code and system error.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   void Close() override; // the socket

   // Forgets that the end was met: the socket has a new connection.
   void Reset() { itsIsAtEnd = false; }

private:
   Socket& itsSocket;
   bool itsIsAtEnd = false;
};
