#include "talvenor/transfer/TransferSyntaxTypes.h"

#include <functional>
#include <iterator>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"

// One served transfer syntax. A compressed one gives its own type object to its decoders and encoders.
struct TransferSyntaxRow
{
   const RWCString* itsUID;
   TransferSyntaxType::BasicTransferSyntaxType itsBasicType;
   bool itsIsCompressed; // pixel data is compressed and encapsulated
   bool itsIsLossless;
   const char* itsLossyMethod;
   InputTransferSyntax* (*itsBorrowingDecoder)(InputStream&, const TransferSyntaxType&);
   InputTransferSyntax* (*itsOwningDecoder)(InputStream*, const TransferSyntaxType&);
   OutputTransferSyntax* (*itsEncoder)(OutputStream&, const TransferSyntaxType&);
};

namespace
{
// Codec is a decoder or an encoder; Base is what is returned.
template <class Base, class Codec, class Stream>
Base* MakeNative(Stream theStream, const TransferSyntaxType&)
{
   return new Codec(theStream);
}

template <class Base, class Codec, class Stream>
Base* MakeCompressed(Stream theStream, const TransferSyntaxType& theType)
{
   return new Codec(theStream, theType);
}

using Type = TransferSyntaxType;

template <class Decoder, class Encoder>
constexpr TransferSyntaxRow CompressedRow(const RWCString& theUID, bool theIsLossless, const char* theLossyMethod)
{
   return {&theUID,
           Type::LittleEndianExplicit,
           true,
           theIsLossless,
           theLossyMethod,
           MakeCompressed<InputTransferSyntax, Decoder, InputStream&>,
           MakeCompressed<InputTransferSyntax, Decoder, InputStream*>,
           MakeCompressed<OutputTransferSyntax, Encoder, OutputStream&>};
}

template <class Decoder, class Encoder>
constexpr TransferSyntaxRow NativeRow(const RWCString& theUID, Type::BasicTransferSyntaxType theType)
{
   return {&theUID,
           theType,
           false,
           false,
           "",
           MakeNative<InputTransferSyntax, Decoder, InputStream&>,
           MakeNative<InputTransferSyntax, Decoder, InputStream*>,
           MakeNative<OutputTransferSyntax, Encoder, OutputStream&>};
}

// PS3.5 annex A. Lossy methods: PS3.3 C.7.6.1.1.5.1.
constexpr TransferSyntaxRow kImplicitLE =
    NativeRow<LittleEndianImplicitInputTransferSyntax, LittleEndianImplicitOutputTransferSyntax>(
        Type::TSLEImplicitUID, Type::LittleEndianImplicit);
constexpr TransferSyntaxRow kExplicitLE =
    NativeRow<LittleEndianExplicitInputTransferSyntax, LittleEndianExplicitOutputTransferSyntax>(
        Type::TSLEExplicitUID, Type::LittleEndianExplicit);
constexpr TransferSyntaxRow kExplicitBE =
    NativeRow<BigEndianExplicitInputTransferSyntax, BigEndianExplicitOutputTransferSyntax>(Type::TSBEExplicitUID,
                                                                                           Type::BigEndianExplicit);
using JPEGIn = JPEGInputTransferSyntax;
using JPEG = JPEGOutputTransferSyntax;
using JPEG2K = JPEG2KOutputTransferSyntax;
constexpr TransferSyntaxRow kJPEG50 = CompressedRow<JPEGIn, JPEG>(Type::TSJPEG50UID, false, "ISO_10918_1");
constexpr TransferSyntaxRow kJPEG51 = CompressedRow<JPEGIn, JPEG>(Type::TSJPEG51UID, false, "ISO_10918_1");
constexpr TransferSyntaxRow kJPEG57 = CompressedRow<JPEGIn, JPEG>(Type::TSJPEG57UID, true, "");
constexpr TransferSyntaxRow kJPEG70 = CompressedRow<JPEGIn, JPEG>(Type::TSJPEG70UID, true, "");
constexpr TransferSyntaxRow kJPEGLS = CompressedRow<JPEGIn, JPEG>(Type::TSJPEGLSUID, true, "");
constexpr TransferSyntaxRow kJPEGNLS = CompressedRow<JPEGIn, JPEG>(Type::TSJPEGNLSUID, false, "ISO_14495_1");
constexpr TransferSyntaxRow kJPEG2KLossless = CompressedRow<JPEGIn, JPEG>(Type::TSJPEG2KLosslessUID, true, "");
constexpr TransferSyntaxRow kJPEG2K = CompressedRow<JPEGIn, JPEG2K>(Type::TSJPEG2KUID, false, "ISO_15444_1");
constexpr TransferSyntaxRow kRLE =
    CompressedRow<RLEInputTransferSyntax, RLEOutputTransferSyntax>(Type::TSRLEUID, true, "");

template <class Stream>
InputTransferSyntax* RefuseDecoder(Stream, const TransferSyntaxType&)
{
   throw StreamIOException("TransferSyntaxType::CreateInputTransferSyntax(): this transfer syntax has no decoder",
                           TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
}

OutputTransferSyntax* RefuseEncoder(OutputStream&, const TransferSyntaxType&)
{
   throw StreamIOException("TransferSyntaxType::CreateOutputTransferSyntax(): this transfer syntax has no encoder",
                           TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
}
} // namespace

TransferSyntaxType::~TransferSyntaxType() = default;

const TransferSyntaxRow& TransferSyntaxType::GetRow() const
{
   static const RWCString aNoUID;
   static const TransferSyntaxRow aRow = {
       &aNoUID,      UnknownBasicType, false, false, "", RefuseDecoder<InputStream&>, RefuseDecoder<InputStream*>,
       RefuseEncoder};
   return aRow;
}

int TransferSyntaxType::IsExplicit() const
{
   return IsExplicit(GetBasicTransferSyntaxType());
}

int TransferSyntaxType::IsLittleEndian() const
{
   return IsLittleEndian(GetBasicTransferSyntaxType());
}

TNEndian::EndianType TransferSyntaxType::GetEndian() const
{
   return GetBasicTransferSyntaxType() == BigEndianExplicit ? TNEndian::BigEndian : TNEndian::LittleEndian;
}

int TransferSyntaxType::IsEncapsulated() const
{
   return GetRow().itsIsCompressed;
}

int TransferSyntaxType::IsCompressed() const
{
   return GetRow().itsIsCompressed;
}

int TransferSyntaxType::IsLosslessCompressed() const
{
   return GetRow().itsIsLossless;
}

RWCString TransferSyntaxType::GetLossyImageCompressionMethod() const
{
   return GetRow().itsLossyMethod;
}

TransferSyntaxType::BasicTransferSyntaxType TransferSyntaxType::GetBasicTransferSyntaxType() const
{
   return GetRow().itsBasicType;
}

const RWCString& TransferSyntaxType::GetUID() const
{
   return *GetRow().itsUID;
}

InputTransferSyntax* TransferSyntaxType::CreateInputTransferSyntax(InputStream* theStream) const
{
   return GetRow().itsOwningDecoder(theStream, *this);
}

InputTransferSyntax* TransferSyntaxType::CreateInputTransferSyntax(InputStream& theStream) const
{
   return GetRow().itsBorrowingDecoder(theStream, *this);
}

OutputTransferSyntax* TransferSyntaxType::CreateOutputTransferSyntax(OutputStream& theStream) const
{
   return GetRow().itsEncoder(theStream, *this);
}

unsigned int TransferSyntaxType::hash() const
{
   return static_cast<unsigned int>(std::hash<RWCString>()(GetUID()));
}

bool TransferSyntaxType::IsUncompressed(const RWCString& theUID)
{
   return theUID == TSLEImplicitUID || theUID == TSLEExplicitUID || theUID == TSBEExplicitUID;
}

int TransferSyntaxType::IsExplicit(BasicTransferSyntaxType theType)
{
   return theType == LittleEndianExplicit || theType == BigEndianExplicit;
}

int TransferSyntaxType::IsLittleEndian(BasicTransferSyntaxType theType)
{
   return theType == LittleEndianImplicit || theType == LittleEndianExplicit;
}

const TransferSyntaxRow& LittleEndianImplicitTransferSyntaxType::GetRow() const
{
   return kImplicitLE;
}

const TransferSyntaxRow& LittleEndianExplicitTransferSyntaxType::GetRow() const
{
   return kExplicitLE;
}

const TransferSyntaxRow& BigEndianExplicitTransferSyntaxType::GetRow() const
{
   return kExplicitBE;
}

const TransferSyntaxRow& JPEG50TransferSyntaxType::GetRow() const
{
   return kJPEG50;
}

const TransferSyntaxRow& JPEG51TransferSyntaxType::GetRow() const
{
   return kJPEG51;
}

const TransferSyntaxRow& JPEG57TransferSyntaxType::GetRow() const
{
   return kJPEG57;
}

const TransferSyntaxRow& JPEG70TransferSyntaxType::GetRow() const
{
   return kJPEG70;
}

const TransferSyntaxRow& JPEGLSTransferSyntaxType::GetRow() const
{
   return kJPEGLS;
}

const TransferSyntaxRow& JPEGNLSTransferSyntaxType::GetRow() const
{
   return kJPEGNLS;
}

const TransferSyntaxRow& JPEG2KLosslessTransferSyntaxType::GetRow() const
{
   return kJPEG2KLossless;
}

const TransferSyntaxRow& JPEG2KTransferSyntaxType::GetRow() const
{
   return kJPEG2K;
}

const TransferSyntaxRow& RLETransferSyntaxType::GetRow() const
{
   return kRLE;
}
