// A byte stream that writes a DICOM file (PS3.10 section 7): preamble and file meta information when it is opened, then
// whatever is written to it: the dataset, from an encoder of GetTransferSyntaxUID.
//
// Failures throw StreamIOException; what has been written by then stays written and the output is to be abandoned. Not
// locked: one thread at a time.
#pragma once

#include <memory>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/OutputStream.h"

class Part10Header;

class TALVENOR_API Part10OutputStream : public OutputStream
{
public:
   ~Part10OutputStream() override;

   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;
   void Flush() override = 0;
   void Seek(unsigned int thePosition) override; // here unsupported
   int CanSeek() const override;                 // here 0

   // The bytes written so far, header included, modulo 2^32; seeking does not change it.
   unsigned int GetStreamPosition() const override { return static_cast<unsigned int>(itsBytesWritten); }
   void Close() override = 0;

protected:
   // Takes the header, or borrows it: it must outlive the stream then.
   explicit Part10OutputStream(Part10Header* theHeader);
   explicit Part10OutputStream(const Part10Header& theHeader);
   Part10OutputStream(const Part10OutputStream&) = delete;
   Part10OutputStream& operator=(const Part10OutputStream&) = delete;

   // The target: writes all theCount bytes (1 or more), or seeks.
   virtual void WriteImpl(const unsigned char* theBytes, unsigned int theCount) = 0;
   virtual void SeekImpl(unsigned int thePosition); // here unsupported

public:
   const RWCString& GetTransferSyntaxUID() const;

protected:
   // Preamble and meta information, at the start of a target. Nothing is written of a header that lacks a required UID
   // (TN_INVALID_FILE_HANDLE). The most derived class calls it once its target is open.
   void WriteHeader();

private:
   std::unique_ptr<const Part10Header> itsOwnedHeader; // null when borrowed
   const Part10Header& itsHeader;
   UINT64 itsBytesWritten = 0;
};
