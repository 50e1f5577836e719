// The bytes of one compressed frame: a view of a given length on a BufferingInputStream, which has recorded the frame
// while its end was searched, or still has it before it. Not locked: one thread at a time.
#pragma once

#include <memory>

#include "talvenor/io/InputStream.h"

class BufferingInputStream;

class TALVENOR_API ImageFramePixelInputStream : public InputStream
{
public:
   // The frame is the next theLength bytes: first those that theStream has recorded and not replayed, then those that
   // it reads. theStream is borrowed, until End is called.
   ImageFramePixelInputStream(BufferingInputStream& theStream, UINT64 theLength);

   // A copy is the same view: what is read from one of them has been read from all.
   ImageFramePixelInputStream(const ImageFramePixelInputStream& theOther) = default;
   ImageFramePixelInputStream& operator=(const ImageFramePixelInputStream& theOther) = default;
   ~ImageFramePixelInputStream() override;

   // Positions count from the first byte of the frame; seeking goes forward only, and not beyond its end.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override { return 0; }
   INT64 Length() const override { return static_cast<INT64>(GetInitialLength()); }
   unsigned int GetStreamPosition() const override; // modulo 2^32
   void Close() override {}                         // the stream is not the frame's

   // In bytes.
   UINT64 GetRemainingBytes() const;
   UINT64 GetInitialLength() const;

   // Skips whatever is left of the view.
   void Flush();

   // An addition to the listed operations: nothing more can be read from this view, nor its copies, and the stream is
   // not touched again. ImageFrameInputStream ends the views that its callers hold before it goes on.
   void End();

private:
   struct View;
   std::shared_ptr<View> itsView;
};
