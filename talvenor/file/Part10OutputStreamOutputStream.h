// A DICOM file that goes into another stream.
#pragma once

#include "talvenor/file/Part10OutputStream.h"

class TALVENOR_API Part10OutputStreamOutputStream : public Part10OutputStream
{
public:
   // The header is taken in the pointer form and borrowed in the other.
   explicit Part10OutputStreamOutputStream(Part10Header* theHeader);
   explicit Part10OutputStreamOutputStream(const Part10Header& theHeader);

   // Does not close: the target is the caller's.
   ~Part10OutputStreamOutputStream() override;

   // Writes the header to theStream, which is borrowed and must outlive this one (or its Close, which closes it too).
   virtual void Open(OutputStream& theStream);

   void Flush() override;
   unsigned int GetMaximumOutputBlockSize() const override; // that of the target
   void Close() override;

protected:
   void WriteImpl(const unsigned char* theBytes, unsigned int theCount) override;

private:
   OutputStream* itsStream = nullptr;
};
