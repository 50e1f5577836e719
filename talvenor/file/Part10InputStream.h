// A byte stream that knows the DICOM file format (PS3.10 section 7): opening it reads and checks preamble and file meta
// information, and what it delivers then is the dataset. Look up the decoder for GetTransferSyntaxUID in the registry.
//
// Tolerated: files without preamble and meta information, whose transfer syntax is guessed from the first element, and
// meta information in implicit VR. The group length of the meta information is not trusted.
//
// Positions are in bytes from the start of the file or source; what tells them in 32 bits tells them modulo 2^32, and
// GetFileSize saturates at 0xFFFFFFFF. Reading and skipping go on beyond 4 GiB, seeking does not reach there.
// Failures throw StreamIOException; the stream is then not usable. Not locked: one thread at a time.
#pragma once

#include <memory>

#include "talvenor/file/Part10Header.h"
#include "talvenor/io/InputStream.h"

class DICOMDataObject;
class InputTransferSyntax;
class VR;

class TALVENOR_API Part10InputStream : public InputStream
{
public:
   ~Part10InputStream() override;

   // Fewer bytes than asked for come only at the end of the source.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // A source that can seek is moved theCount on, even beyond its end.
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override = 0;
   INT64 Length() const override { return -1; }
   unsigned int GetStreamPosition() const override { return static_cast<unsigned int>(itsPosition); }
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override { return kPushbackSize - itsPushedBack; }
   unsigned int GetPreferredInputBlockSize() const override;
   void SetPreferredInputBlockSize(unsigned int theSize) override;
   void Close() override = 0; // its body, for classes that override it, forgets what was pushed back

   virtual UINT32 GetFileSize() const = 0;

protected:
   Part10InputStream();
   Part10InputStream(const Part10InputStream&) = delete;
   Part10InputStream& operator=(const Part10InputStream&) = delete;

   // Reads the header. The most derived constructor calls it, once its source is open. See Part10Header for the flags.
   virtual void Open(int theForceDefaultVersion, int theTolerant);

   // The source: raw reads, which may be short, and raw seeks.
   virtual unsigned int ReadImpl(unsigned char* theBuffer, unsigned int theCount) = 0;
   virtual void SeekImpl(unsigned int thePosition) = 0;

public:
   const RWCString& GetTransferSyntaxUID() const { return itsTransferSyntaxUID; }

   // Null when the source has no meta information.
   const Part10Header* GetPart10Header() const { return itsHeader.get(); }

   // An addition: the meta elements as they stand in the file (without group length); null where there are none.
   const DICOMDataObject* GetMetaInformation() const { return itsMetaInformation.get(); }

   // Where the dataset starts.
   UINT32 GetHeaderSize() const { return itsHeaderSize; }

   // Additions: a new decoder of the transfer syntax over this stream, which must outlive it. Throws StreamIOException
   // (TN_TRANSFER_SYNTAX_UNSUPPORTED) when the syntax is not served.
   std::unique_ptr<InputTransferSyntax> CreateDecoder();

   // The transfer syntax that the first bytes of a dataset without meta information (at least 8) suggest.
   static const RWCString& GuessTransferSyntax(const unsigned char* theBytes);

protected:
   static constexpr unsigned int kMagicOffset = Part10Header::kPreambleLength;
   static constexpr unsigned int kMetaOffset = kMagicOffset + 4;
   static constexpr unsigned int kHeaderBufferSize = 144;
   static constexpr unsigned int kPushbackSize = 256;

   // Whether GetFileSize is the true size of the source: set before Open by a stream that may not know.
   bool itsKnowsFileSize = true;

private:
   void ReadMetaInformation(const unsigned char* theHeaderBytes, int theForceDefaultVersion, int theTolerant);
   std::unique_ptr<InputTransferSyntax> OpenMetaInformation(const unsigned char* theFirstBytes, bool& theIsImplicit);
   void ReadMetaElements(InputTransferSyntax& theDecoder, DICOMDataObject& theMetaInformation);
   bool IsMetaElementNext();
   void RewindTo(const unsigned char* theFirstBytes);
   void Discard();
   unsigned int SkipByReading(unsigned int theCount);

   unsigned int TakePushedBack(unsigned char* theBuffer, unsigned int theCount);

   unsigned char itsPushback[kPushbackSize]; // the bytes stand at its end
   unsigned int itsPushedBack = 0;
   UINT64 itsPosition = 0;
   UINT32 itsHeaderSize = 0;
   std::unique_ptr<DICOMDataObject> itsMetaInformation;
   std::unique_ptr<Part10Header> itsHeader;
   RWCString itsTransferSyntaxUID;
};
