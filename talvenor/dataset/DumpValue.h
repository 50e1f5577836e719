// How the dump renders the value of one element. Not part of the library's interface.
//
// Every rendering stays on one line and within a limit, except attribute tags (all of them) and encapsulated pixel data
// (lines of its own for frames and fragments).
#pragma once

#include "talvenor/dataset/DumpText.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class EncapsulatedPixelVR;
class InstanceSpecificDataDictionary;
class VR;

// Borrowed bytes and what is needed to read them.
struct DumpValue
{
   const unsigned char* itsBytes;
   UINT32 itsLength; // of them
   TNEndian::EndianType itsEndian;
   const InstanceSpecificDataDictionary* itsDictionary; // explains a single attribute tag; may be null
};

// The value by type code: in decimal, as text between double quotes, or as bytes; "(null)" when there is none.
void PrintValue(DumpText& theText, const DumpValue& theValue, UINT16 theTypeCode);

// The first bytes, each as "0x" and two digits; "..." behind them when there are more than theLimit.
void PrintBytes(DumpText& theText, const DumpValue& theValue, UINT32 theLimit);
constexpr UINT32 kRawByteLimit = 16;

// What an element of group 0000 says in words, as " (words)"; nothing when its value cannot be read.
void PrintCommandAnnotation(DumpText& theText, const VR& theVR, TNEndian::EndianType theEndian);

// Frames and fragments with their first bytes; a damaged offset table is reported in the text. Defined in pixel/.
void PrintEncapsulatedPixels(DumpText& theText, const EncapsulatedPixelVR& theVR);

// A byte of printable ASCII.
constexpr bool IsPrintable(unsigned char theByte)
{
   return theByte >= 0x20 && theByte <= 0x7E;
}
bool ArePrintable(const unsigned char* theBytes, UINT32 theLength);
