// Two sockets that are connected over the loopback interface. No other network is needed.
#pragma once

#include <stdexcept>

#include "talvenor/ul/Socket.h"

struct ConnectedSockets
{
   ConnectedSockets()
   {
      Socket aListener;
      if (!aListener.Listen(0, 1, "127.0.0.1") ||
          !itsRequester.Open("127.0.0.1", std::to_string(aListener.GetListenPort())) || !aListener.Accept(10))
      {
         throw std::runtime_error("the loopback interface makes no connection");
      }
      itsAcceptor.ManageConnection(aListener.UnmanageConnection());
   }

   Socket itsRequester;
   Socket itsAcceptor;
};
