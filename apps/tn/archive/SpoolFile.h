// A file that is being received: it has no name of its own yet, but a temporary one in a folder for such files, and
// vanishes unless it is given its name.
//
// What is received goes from the socket into the buffer here and from there to the file, in writes of whole pages.
// Failures throw SystemFailure. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "apps/tn/base/Descriptor.h"
#include "talvenor/io/InputStream.h"

// Memory for the bytes on their way; one serves file after file.
class SpoolBuffer
{
public:
   static constexpr std::size_t kSize = 65536; // bytes: little is left to be written when the last byte has come
   static constexpr std::size_t kPage = 4096;

   unsigned char* Get();

private:
   struct Free
   {
      void operator()(unsigned char* theMemory) const { std::free(theMemory); }
   };

   std::unique_ptr<unsigned char[], Free> itsMemory; // made at the first use
};

class SpoolFile
{
public:
   // Creates a file in theFolder, which is borrowed, as is theBuffer.
   SpoolFile(const Descriptor& theFolder, SpoolBuffer& theBuffer);
   SpoolFile(const SpoolFile&) = delete;
   SpoolFile& operator=(const SpoolFile&) = delete;
   ~SpoolFile();

   // Where the next bytes are to be put, and how many fit there: at least one. Then Fill says how many came.
   unsigned char* GetRoom(std::size_t& theSize);
   void Fill(std::size_t theCount) { itsFilled += theCount; }
   void Write(const unsigned char* theBytes, std::size_t theCount);

   // Puts what is still in the buffer into the file.
   void Finish();

   // The file is on the disk when this returns.
   void Synchronise();

   // Gives it its name in another folder of the file system, which is borrowed. False when there is a file of that name
   // already; it stays, unless theReplaces: then this one is in its place at once, and it is gone when this object is.
   bool MoveTo(const Descriptor& theFolder, const std::string& theName, bool theReplaces);

   // Undoes MoveTo: a file that was replaced is back under its name. Only where even that fails this one stays.
   void MoveBack(const Descriptor& theFolder, const std::string& theName) noexcept;

   std::uint64_t GetSize() const { return itsWritten + itsFilled; }
   int GetDescriptor() const { return itsFile.Get(); }

private:
   void WriteOut();
   bool TakeName(const Descriptor& theFolder, const std::string& theName);
   bool ChangePlaces(const Descriptor& theFolder, const std::string& theName);

   enum class Place
   {
      kTemporary,
      kOwn,      // nobody else has had it
      kExchanged // another file had it, which is in the temporary one
   };

   const Descriptor& itsFolder;
   unsigned char* itsBuffer;
   std::string itsName; // in itsFolder
   Place itsPlace = Place::kTemporary;
   Descriptor itsFile; // made last: what has no destructor yet leaves no file behind
   std::size_t itsFilled = 0;
   std::uint64_t itsWritten = 0;
};

// Delivers what another stream does, and writes it to a file as it comes. Bytes that are skipped are never copied.
class SpoolingStream : public InputStream
{
public:
   // What the source throws. It is not the data set's fault.
   class SourceFailure : public std::exception
   {};

   // Both are borrowed.
   SpoolingStream(InputStream& theSource, SpoolFile& theFile) : itsSource(theSource), itsFile(theFile) {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;
   void Close() override {}

   // Takes the rest of the source into the file.
   void TakeRest();

private:
   unsigned int Ahead(unsigned int theCount);
   unsigned int ReadSource(unsigned char* theBuffer, std::size_t theCount);

   InputStream& itsSource;
   SpoolFile& itsFile;
   const unsigned char* itsNext = nullptr; // of the bytes that were read ahead
   std::size_t itsCount = 0;
   bool itsHasEnded = false;
};
