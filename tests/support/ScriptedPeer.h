// A peer behind a TCP port of this host that answers by a script, whatever it is asked: after each PDU that comes, the
// next answer. When the script is over it goes on reading until the other side closes or aborts, or closes itself.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

class ScriptedPeer
{
public:
   enum AtTheEnd
   {
      kRead,
      kClose
   };

   // With a pause, every byte of an answer is sent alone and so long after the one before.
   explicit ScriptedPeer(std::vector<std::string> theAnswers, AtTheEnd theEnd = kRead,
                         std::chrono::milliseconds thePause = {})
       : itsAnswers(std::move(theAnswers)), itsEnd(theEnd), itsPause(thePause),
         itsListener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
   {
      sockaddr_in anAddress{};
      anAddress.sin_family = AF_INET;
      anAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      socklen_t aSize = sizeof anAddress;
      auto* const aGeneric = reinterpret_cast<sockaddr*>(&anAddress);
      if (bind(itsListener, aGeneric, aSize) != 0 || listen(itsListener, 1) != 0 ||
          getsockname(itsListener, aGeneric, &aSize) != 0)
      {
         throw std::runtime_error("no port to listen on");
      }
      itsPort = ntohs(anAddress.sin_port);
      itsThread = std::thread([this] { Serve(); });
   }
   ~ScriptedPeer()
   {
      Finish();
      close(itsListener);
   }
   ScriptedPeer(const ScriptedPeer&) = delete;
   ScriptedPeer& operator=(const ScriptedPeer&) = delete;

   std::string Port() const { return std::to_string(itsPort); }

   // The types of the PDUs that came, a digit each. Ends the peer: call it when the other side is done.
   std::string Finish()
   {
      if (itsThread.joinable())
      {
         shutdown(itsListener, SHUT_RDWR); // when nobody has connected
         itsThread.join();
      }
      return itsReceived;
   }

private:
   static constexpr char kAbort = '7';

   void Serve()
   {
      const int aConnection = accept(itsListener, nullptr, nullptr);
      if (aConnection < 0)
      {
         return;
      }
      for (std::size_t i = 0; ReadPDU(aConnection) && itsReceived.back() != kAbort; ++i)
      {
         if (i < itsAnswers.size() && !Send(aConnection, itsAnswers[i]))
         {
            break;
         }
         if (i + 1 >= itsAnswers.size() && itsEnd == kClose)
         {
            break;
         }
      }
      close(aConnection);
   }

   bool Send(int theConnection, const std::string& theBytes) const
   {
      const std::size_t aStep = itsPause.count() > 0 ? 1 : theBytes.size();
      for (std::size_t i = 0; i < theBytes.size(); i += aStep)
      {
         if (send(theConnection, theBytes.data() + i, aStep, MSG_NOSIGNAL) < 0)
         {
            return false;
         }
         std::this_thread::sleep_for(itsPause);
      }
      return true;
   }

   bool ReadPDU(int theConnection)
   {
      std::string aHeader(6, '\0');
      if (!ReadAll(theConnection, aHeader))
      {
         return false;
      }
      std::size_t aLength = 0;
      for (std::size_t i = 2; i < aHeader.size(); ++i)
      {
         aLength = aLength << 8 | static_cast<unsigned char>(aHeader[i]);
      }
      std::string aBody(aLength, '\0');
      itsReceived += static_cast<char>('0' + aHeader[0]);
      return ReadAll(theConnection, aBody);
   }

   // At most ten seconds, so that a fault of the other side ends in a failure and not in a hang.
   static bool ReadAll(int theConnection, std::string& theBytes)
   {
      for (std::size_t aCount = 0; aCount < theBytes.size();)
      {
         pollfd aWait{theConnection, POLLIN, 0};
         const ssize_t aPart =
             poll(&aWait, 1, 10000) == 1 ? recv(theConnection, &theBytes[aCount], theBytes.size() - aCount, 0) : 0;
         if (aPart <= 0)
         {
            return false;
         }
         aCount += static_cast<std::size_t>(aPart);
      }
      return true;
   }

   const std::vector<std::string> itsAnswers;
   const AtTheEnd itsEnd;
   const std::chrono::milliseconds itsPause;
   int itsListener;
   unsigned int itsPort = 0;
   std::string itsReceived;
   std::thread itsThread;
};
