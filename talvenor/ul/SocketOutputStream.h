// Writes to a socket as an OutputStream. Nothing is held back.
#pragma once

#include "talvenor/io/OutputStream.h"

class Socket;

class TALVENOR_API SocketOutputStream final : public OutputStream
{
public:
   explicit SocketOutputStream(Socket& theSocket) : itsSocket(theSocket) {} // borrowed; must outlive this object
   ~SocketOutputStream() override;

   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;
   void Flush() override {}
   void Close() override; // the socket

private:
   Socket& itsSocket;
};
