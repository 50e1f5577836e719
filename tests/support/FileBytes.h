// Puts DICOM files together field by field (PS3.10 7.1): bytes as strings, which may hold zeros.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "talvenor/file/Part10MemoryInputStream.h"

// Bytes from a literal, zeros included: Bytes("\x02\x00").
template <std::size_t theSize>
std::string Bytes(const char (&theLiteral)[theSize])
{
   return std::string(theLiteral, theSize - 1);
}

// An element in explicit VR little endian with a 16-bit length (PS3.5 7.1.2). theTag is group and element, 4 bytes.
inline std::string ShortElement(const std::string& theTag, const char* theType, const std::string& theValue)
{
   const char aLength[] = {static_cast<char>(theValue.size()), static_cast<char>(theValue.size() >> 8)};
   return theTag + theType + std::string(aLength, 2) + theValue;
}

inline const std::string kExplicitLittle = Bytes("1.2.840.10008.1.2.1\0");
inline const std::string kExplicitBig = Bytes("1.2.840.10008.1.2.2\0");
inline const std::string kBaselineJPEG = "1.2.840.10008.1.2.4.50";

inline const std::string kPreambleAndMagic = std::string(128, '\0') + "DICM";
inline const std::string kGroupLength = Bytes("\x02\x00\x00\x00UL\x04\x00\x50\x00\x00\x00"); // seldom true
inline const std::string kVersion = Bytes("\x02\x00\x01\x00OB\x00\x00\x02\x00\x00\x00\x00\x01");
inline const std::string kSOPClass = ShortElement(Bytes("\x02\x00\x02\x00"), "UI", Bytes("1.2.3\0"));
inline const std::string kSOPInstance = ShortElement(Bytes("\x02\x00\x03\x00"), "UI", "1.22.3");
inline const std::string kImplementation = ShortElement(Bytes("\x02\x00\x12\x00"), "UI", Bytes("1.2.8\0"));

inline std::string TransferSyntaxElement(const std::string& theUID)
{
   return ShortElement(Bytes("\x02\x00\x10\x00"), "UI", theUID);
}

// Preamble and whole meta information.
inline std::string FileHeader(const std::string& theTransferSyntax)
{
   return kPreambleAndMagic + kGroupLength + kVersion + kSOPClass + kSOPInstance +
          TransferSyntaxElement(theTransferSyntax) + kImplementation;
}

// The stream has a copy of the bytes.
inline std::unique_ptr<Part10MemoryInputStream> OpenBytes(const std::string& theBytes, int theForceVersion = 0,
                                                          int theTolerant = 0)
{
   auto* const aCopy = new unsigned char[theBytes.size()];
   std::copy(theBytes.begin(), theBytes.end(), aCopy);
   return std::make_unique<Part10MemoryInputStream>(aCopy, static_cast<UINT32>(theBytes.size()), theForceVersion,
                                                    theTolerant);
}

inline std::string ReadText(InputStream& theStream, unsigned int theCount)
{
   std::string aText(theCount, '?');
   aText.resize(theStream.Read(reinterpret_cast<unsigned char*>(aText.data()), theCount));
   return aText;
}
