// Composes the PDUs of associations byte by byte (PS3.8 9.3), whole ones and broken ones, as strings that may hold
// zeros.
#pragma once

#include <string>
#include <vector>

namespace PDUBytes
{
using namespace std::string_literals;

inline std::string Number(std::size_t theNumber, unsigned int theSize)
{
   std::string aBytes;
   for (unsigned int i = theSize; i-- > 0;)
   {
      aBytes += static_cast<char>(theNumber >> 8 * i);
   }
   return aBytes;
}

// A PDU that states theLength, or the length of its body.
inline std::string PDU(unsigned char theType, const std::string& theBody, std::size_t theLength)
{
   return Number(theType, 1) + "\0"s + Number(theLength, 4) + theBody;
}
inline std::string PDU(unsigned char theType, const std::string& theBody)
{
   return PDU(theType, theBody, theBody.size());
}

inline std::string Item(unsigned char theType, const std::string& theBody)
{
   return Number(theType, 1) + "\0"s + Number(theBody.size(), 2) + theBody;
}

inline std::string Title(std::string theTitle)
{
   theTitle.resize(16, ' ');
   return theTitle;
}

struct Proposal
{
   unsigned char itsID;
   std::string itsAbstractSyntax;
   std::vector<std::string> itsTransferSyntaxes;
};

struct Answer
{
   unsigned char itsID;
   unsigned char itsResult;
   std::string itsTransferSyntax;
};

// SOP class, SCU role, SCP role.
inline std::string Role(const std::string& theClass, char theSCU, char theSCP)
{
   return Item(0x54, Number(theClass.size(), 2) + theClass + theSCU + theSCP);
}

inline std::string UserInformation(std::size_t theMaximum, const std::string& theMore = "")
{
   return Item(0x50, Item(0x51, Number(theMaximum, 4)) + Item(0x52, "1.2.3") + theMore);
}

inline std::string Association(unsigned char theType, const std::string& theItems)
{
   return PDU(theType, "\0\1\0\0"s + Title("SCP") + Title("SCU") + std::string(32, '\0') +
                           Item(0x10, "1.2.840.10008.3.1.1.1") + theItems);
}

inline std::string Request(const std::vector<Proposal>& theProposals, std::size_t theMaximum = 16384,
                           const std::string& theUserItems = "")
{
   std::string anItems;
   for (const Proposal& aProposal : theProposals)
   {
      std::string aBody = Number(aProposal.itsID, 1) + "\0\0\0"s + Item(0x30, aProposal.itsAbstractSyntax);
      for (const std::string& aSyntax : aProposal.itsTransferSyntaxes)
      {
         aBody += Item(0x40, aSyntax);
      }
      anItems += Item(0x20, aBody);
   }
   return Association(0x01, anItems + UserInformation(theMaximum, theUserItems));
}

inline std::string Acceptance(const std::vector<Answer>& theAnswers, std::size_t theMaximum = 16384,
                              const std::string& theUserItems = "")
{
   std::string anItems;
   for (const Answer& anAnswer : theAnswers)
   {
      anItems += Item(0x21, Number(anAnswer.itsID, 1) + "\0"s + Number(anAnswer.itsResult, 1) + "\0"s +
                                Item(0x40, anAnswer.itsTransferSyntax));
   }
   return Association(0x02, anItems + UserInformation(theMaximum, theUserItems));
}

inline std::string Rejection(char theResult, char theSource, char theReason)
{
   return PDU(0x03, "\0"s + theResult + theSource + theReason);
}

// Several make one P-DATA-TF. theControl: 1 command, 2 last fragment.
inline std::string PDV(unsigned char theID, unsigned char theControl, const std::string& theData)
{
   return Number(theData.size() + 2, 4) + Number(theID, 1) + Number(theControl, 1) + theData;
}
inline std::string PData(const std::string& thePDVs)
{
   return PDU(0x04, thePDVs);
}

inline std::string ReleaseRequest()
{
   return PDU(0x05, "\0\0\0\0"s);
}
inline std::string ReleaseResponse()
{
   return PDU(0x06, "\0\0\0\0"s);
}
inline std::string Abort(char theSource, char theReason)
{
   return PDU(0x07, "\0\0"s + theSource + theReason);
}

// The PDUs one after the other, as "AC RJ 7(2,1)": what an answer consists of. A release or an abort shows its bytes.
inline std::string Describe(const std::string& theBytes)
{
   static constexpr const char* kNames[] = {"?", "RQ", "AC", "RJ", "DATA", "RELEASE", "RELEASED", "ABORT"};
   std::string aText;
   for (std::size_t i = 0; i + 6 <= theBytes.size();)
   {
      const auto aByte = [&](std::size_t theOffset) {
         return static_cast<unsigned char>(theOffset < theBytes.size() ? theBytes[theOffset] : 0);
      };
      const unsigned int aType = aByte(i);
      aText += (aText.empty() ? "" : " ") + std::string(aType < 8 ? kNames[aType] : "?");
      if (aType == 3)
      {
         aText += "(" + std::to_string(aByte(i + 7)) + "," + std::to_string(aByte(i + 8)) + "," +
                  std::to_string(aByte(i + 9)) + ")";
      }
      if (aType == 7)
      {
         aText += "(" + std::to_string(aByte(i + 8)) + "," + std::to_string(aByte(i + 9)) + ")";
      }
      i += 6 + (std::size_t{aByte(i + 2)} << 24 | std::size_t{aByte(i + 3)} << 16 | std::size_t{aByte(i + 4)} << 8 |
                std::size_t{aByte(i + 5)});
   }
   return aText;
}
} // namespace PDUBytes
