// Runs an encoder on a stream in memory, and says what came of it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/Decoding.h"
#include "support/Elements.h"
#include "support/RecordingOutputStream.h"
#include "talvenor/transfer/OutputTransferSyntax.h"

namespace Encoders
{
using Write = std::function<void(OutputTransferSyntax&)>;

constexpr Encoding kImplicit = Encoding::Implicit;
constexpr Encoding kExplicit = Encoding::Explicit;
constexpr Encoding kBigEndian = Encoding::BigEndian;

inline std::unique_ptr<OutputTransferSyntax> MakeEncoder(const RWCString& theUID, OutputStream& theStream)
{
   const TransferSyntaxType* aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theUID);
   return std::unique_ptr<OutputTransferSyntax>(aType->CreateOutputTransferSyntax(theStream));
}

struct Encoded
{
   std::string itsBytes;
   StreamError itsError;
};

inline Encoded Encode(const RWCString& theUID, const Write& theWrite)
{
   RecordingOutputStream aStream;
   const auto anEncoder = MakeEncoder(theUID, aStream);
   const StreamError anError = StreamErrorOf([&] { theWrite(*anEncoder); });
   return {{aStream.Bytes().begin(), aStream.Bytes().end()}, anError};
}

inline std::string HexOf(const std::string& theBytes)
{
   return Hex(reinterpret_cast<const unsigned char*>(theBytes.data()), theBytes.size());
}

// Decodes and encodes element by element, as a host that keeps nothing in memory does.
inline Encoded Transcode(Encoding theFrom, Encoding theTo, const std::string& theBytes)
{
   return Encode(TransferSyntaxOf(theTo), [&](OutputTransferSyntax& theEncoder) {
      PiecewiseInputStream aStream(Bytes(theBytes.begin(), theBytes.end()));
      const auto aDecoder = MakeDecoder(TransferSyntaxOf(theFrom), aStream);
      while (VR* const aVR = aDecoder->NextVR())
      {
         theEncoder.SaveVR(aVR);
      }
   });
}

inline Write Saving(UINT32 theTag, UINT16 theType, const std::string& theValue)
{
   return [=](OutputTransferSyntax& theEncoder) {
      VR* const aVR = BytesElement(theTag, theType, theValue);
      aVR->SetLength(static_cast<UINT32>(theValue.size())); // odd where the value is
      theEncoder.SaveVR(aVR);
   };
}

// That nothing failed, and those bytes came out.
inline void ExpectBytes(const Encoded& theResult, const std::string& theExpected, const std::string& theName = "")
{
   EXPECT_EQ(theResult.itsError, kNoStreamError) << theName;
   EXPECT_EQ(HexOf(theResult.itsBytes), HexOf(theExpected)) << theName;
}
} // namespace Encoders
