// Over libjpeg, a library of C: what it finds wrong comes back by longjmp, so nothing that such a jump passes has a
// destructor.
#include "apps/tn/codec/FrameDecoder.h"

#include <csetjmp>
#include <cstdio>

#define XMD_H // libjpeg leaves the names INT16 and INT32 to others, which we are
#include <jpeglib.h>

#include <jerror.h>

namespace
{
struct Faults
{
   jpeg_error_mgr itsManager; // the first member: libjpeg knows no more
   std::jmp_buf itsReturn;
   char itsText[JMSG_LENGTH_MAX];
};

[[noreturn]] void Leave(j_common_ptr theInfo)
{
   Faults& aFaults = *reinterpret_cast<Faults*>(theInfo->err);
   aFaults.itsManager.format_message(theInfo, aFaults.itsText);
   std::longjmp(aFaults.itsReturn, 1);
}

// libjpeg goes on where data is missing or damaged, with samples of its own invention.
void TakeMessage(j_common_ptr theInfo, int theLevel)
{
   const int aCode = theInfo->err->msg_code;
   const bool isHarmless = aCode == JWRN_EXTRANEOUS_DATA || aCode == JWRN_ADOBE_XFORM || aCode == JWRN_JFIF_MAJOR ||
                           aCode == JWRN_NOT_SEQUENTIAL;
   if (theLevel < 0 && !isHarmless)
   {
      Leave(theInfo);
   }
}

void Ignore(j_common_ptr) {}

enum class Step
{
   Read,
   Mismatch,
   Failed
};

struct Job
{
   jpeg_decompress_struct itsInfo;
   Faults itsFaults;
   const ImageDescription* itsImage;
   std::span<const unsigned char> itsFrame;
   unsigned char* itsPixels;
   bool itsIsRGB;
};

// An Adobe marker and a JFIF header tell what the components are, whatever the dataset says of them.
bool IsYCbCr(const jpeg_decompress_struct& theInfo, const ImageDescription& theImage)
{
   if (theInfo.saw_Adobe_marker)
   {
      return theInfo.Adobe_transform != 0;
   }
   return theInfo.saw_JFIF_marker || theImage.IsYBR();
}

Step Run(Job& theJob)
{
   jpeg_decompress_struct& anInfo = theJob.itsInfo;
   const ImageDescription& anImage = *theJob.itsImage;
   if (setjmp(theJob.itsFaults.itsReturn) != 0)
   {
      return Step::Failed;
   }
   jpeg_create_decompress(&anInfo);
   jpeg_mem_src(&anInfo, theJob.itsFrame.data(), theJob.itsFrame.size());
   jpeg_read_header(&anInfo, TRUE);
   if (anInfo.image_height != anImage.itsRows || anInfo.image_width != anImage.itsColumns ||
       anInfo.num_components != anImage.itsSamples || anInfo.progressive_mode || anInfo.arith_code)
   {
      return Step::Mismatch;
   }
   if (anImage.itsSamples == 3)
   {
      anInfo.jpeg_color_space = IsYCbCr(anInfo, anImage) ? JCS_YCbCr : JCS_RGB;
      anInfo.out_color_space = JCS_RGB;
      theJob.itsIsRGB = true;
   }
   else
   {
      anInfo.jpeg_color_space = anInfo.out_color_space = JCS_GRAYSCALE;
   }
   anInfo.dct_method = JDCT_ISLOW;
   jpeg_start_decompress(&anInfo);
   const std::size_t aLine = std::size_t{anImage.itsColumns} * anImage.itsSamples;
   while (anInfo.output_scanline < anInfo.output_height)
   {
      JSAMPROW aRow = theJob.itsPixels + anInfo.output_scanline * aLine;
      jpeg_read_scanlines(&anInfo, &aRow, 1);
   }
   return Step::Read;
}

// 8 bits into wider cells, from the end so that no sample is overwritten before its turn.
void Widen(const ImageDescription& theImage, std::span<unsigned char> thePixels)
{
   constexpr unsigned int kPrecision = 8;
   SampleCells aCells(theImage, kPrecision, thePixels.data());
   for (std::size_t anIndex = theImage.GetSampleCount(); anIndex-- > 0;)
   {
      aCells.Put(anIndex, thePixels[anIndex]);
   }
}

struct Owner
{
   ~Owner() { jpeg_destroy_decompress(&itsInfo); } // also of one that was never created

   jpeg_decompress_struct& itsInfo;
};
} // namespace

FrameDecoder::Colours JPEGDecoder::Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels)
{
   Job aJob{};
   aJob.itsImage = &itsImage;
   aJob.itsFrame = theFrame;
   aJob.itsPixels = thePixels.data();
   aJob.itsInfo.err = jpeg_std_error(&aJob.itsFaults.itsManager);
   aJob.itsFaults.itsManager.error_exit = Leave;
   aJob.itsFaults.itsManager.emit_message = TakeMessage;
   aJob.itsFaults.itsManager.output_message = Ignore;
   const Owner anOwner{aJob.itsInfo};
   switch (Run(aJob))
   {
   case Step::Failed: FailDecompression("JPEG: " + std::string(aJob.itsFaults.itsText));
   case Step::Mismatch:
      itsImage.CheckAgainst(aJob.itsInfo.image_height, aJob.itsInfo.image_width,
                            static_cast<unsigned int>(aJob.itsInfo.num_components), 8);
      FailDecompression("the JPEG frame is of another process than its transfer syntax");
   case Step::Read: break;
   }
   if (itsImage.GetCellSize() > 1 || itsImage.itsBitsStored < 8 || itsImage.itsIsSigned)
   {
      Widen(itsImage, thePixels);
   }
   return aJob.itsIsRGB ? Colours::RGB : Colours::AsDescribed;
}
