// Lists the elements of a file in file order, one tab-separated line each, while they are read: for comparing what two
// toolkits see in a file. A line holds
//    path      "/" at the top, else the chain of sequences with item numbers from 0: /0008,1115[0]/0008,1199[2]
//    tag       gggg,eeee
//    VR
//    length    of the value as read; "undefined" for sequences and encapsulated pixel data
//    value     CRC-32 of the value bytes as read; "-" for sequences; for encapsulated pixel data
//              bot=N;frags=K;lens=a,b,c;crc=X with the length of the offset table item, the number of fragments, their
//              lengths, and the CRC-32 of the fragments joined
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObjectInputStreamVR;
class InputStream;
class InputTransferSyntax;
class PixelDataFragmentInputStreamVR;
class VR;
class VRInputStreamVR;

class ElementLister
{
public:
   explicit ElementLister(std::ostream& theOutput) : itsOutput(theOutput) {}

   // The elements of a whole dataset, up to theEnd (a tag) where one is given. Throws what decoding throws.
   void List(InputTransferSyntax& theDecoder, std::optional<UINT32> theEnd);

   // One element that is in memory, at the top.
   void ListElement(VR& theVR);

   // How many have been listed.
   size_t GetCount() const { return itsCount; }

private:
   void ListSequence(DICOMDataObjectInputStreamVR& theSequence);
   void ListItem(VRInputStreamVR& theItem, size_t theNumber);
   void ListFragments(PixelDataFragmentInputStreamVR& theFragments);
   void ListStream(VR& theVR, InputStream& theValue);
   void Start(const VR& theVR);
   void AddChecksum(std::uint32_t theChecksum);

   std::ostream& itsOutput;
   std::string itsPath; // of the set at hand, without the "/" of the top
   std::string itsLine;
   size_t itsCount = 0;
};
