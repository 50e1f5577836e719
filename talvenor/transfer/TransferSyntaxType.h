// The transfer syntaxes that the library serves (PS3.5 section 10 and annex A): one stateless class each, with its
// properties, its decoders and its encoders. Objects of one class are interchangeable, immutable and may be shared
// between threads; the registry (TransferSyntaxManager) holds one of each.
#pragma once

#include "talvenor/dictionary/BasicTransferSyntaxKind.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class InputStream;
class InputTransferSyntax;
class OutputStream;
class OutputTransferSyntax;
struct TransferSyntaxRow;

class TALVENOR_API TransferSyntaxType : public BasicTransferSyntaxKind
{
public:
   // UIDs. Only those with a class below are served; the others are for callers that name them.
   static const RWCString TSLEImplicitUID;
   static const RWCString TSLEExplicitUID;
   static const RWCString TSBEExplicitUID;
   static const RWCString TSJPEG50UID; // JPEG baseline
   static const RWCString TSJPEG51UID; // JPEG extended
   static const RWCString TSJPEG52UID;
   static const RWCString TSJPEG53UID;
   static const RWCString TSJPEG54UID;
   static const RWCString TSJPEG55UID;
   static const RWCString TSJPEG56UID;
   static const RWCString TSJPEG57UID; // JPEG lossless
   static const RWCString TSJPEG58UID;
   static const RWCString TSJPEG59UID;
   static const RWCString TSJPEG60UID;
   static const RWCString TSJPEG61UID;
   static const RWCString TSJPEG62UID;
   static const RWCString TSJPEG63UID;
   static const RWCString TSJPEG64UID;
   static const RWCString TSJPEG65UID;
   static const RWCString TSJPEG66UID;
   static const RWCString TSJPEG70UID; // JPEG lossless, first-order prediction
   static const RWCString TSJPEGLSUID;
   static const RWCString TSJPEGNLSUID; // JPEG-LS near-lossless
   static const RWCString TSJPEG2KLosslessUID;
   static const RWCString TSJPEG2KUID;
   static const RWCString TSRLEUID;
   static const RWCString TSDeflatedUID; // not served

   virtual TransferSyntaxType* Copy() const = 0; // of the same class, owned by the caller
   virtual ~TransferSyntaxType();

   virtual int IsExplicit() const;
   virtual int IsLittleEndian() const;
   virtual TNEndian::EndianType GetEndian() const;
   virtual int IsEncapsulated() const;
   virtual int IsCompressed() const;
   virtual int IsLosslessCompressed() const; // a compressed syntax for which this is 0 is lossy

   // The value of (0028,2114) for pixel data in this syntax (PS3.3 C.7.6.1.1.5); empty unless it is lossy.
   virtual RWCString GetLossyImageCompressionMethod() const;

   // The encoding of everything outside the pixel data.
   virtual BasicTransferSyntaxType GetBasicTransferSyntaxType() const;
   virtual const RWCString& GetUID() const;

   // A new decoder over the stream, owned by the caller, with a data dictionary of its own. The stream must outlive it;
   // in the pointer form the decoder owns the stream. A decoder of a compressed syntax refers to this object, which
   // must outlive it too; those in the registry do.
   virtual InputTransferSyntax* CreateInputTransferSyntax(InputStream* theStream) const;
   virtual InputTransferSyntax* CreateInputTransferSyntax(InputStream& theStream) const;

   // A new encoder over the stream, likewise; the stream is borrowed.
   virtual OutputTransferSyntax* CreateOutputTransferSyntax(OutputStream& theStream) const;

   bool operator==(const TransferSyntaxType& theOther) const { return GetUID() == theOther.GetUID(); }
   bool operator<(const TransferSyntaxType& theOther) const { return GetUID() < theOther.GetUID(); }
   unsigned int hash() const;

   // By basic kind; false for UnknownBasicType.
   static int IsExplicit(BasicTransferSyntaxType theType);
   static int IsLittleEndian(BasicTransferSyntaxType theType);

   // Whether the UID is one of the three uncompressed syntaxes.
   static bool IsUncompressed(const RWCString& theUID);

protected:
   TransferSyntaxType() = default;
   TransferSyntaxType(const TransferSyntaxType&) = default;
   TransferSyntaxType& operator=(const TransferSyntaxType&) = default;

   // The properties of a class of the library's own. A host's class overrides the operations above instead: those that
   // it leaves alone answer for an unnamed, uncompressed syntax of unknown kind without decoders and encoders
   // (StreamIOException, TN_TRANSFER_SYNTAX_UNSUPPORTED).
   virtual const TransferSyntaxRow& GetRow() const;
};
