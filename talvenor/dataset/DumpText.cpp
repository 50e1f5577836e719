#include "talvenor/dataset/DumpText.h"

#include "talvenor/foundation/LogStream.h"

namespace
{
constexpr char kHexDigits[] = "0123456789abcdef";

void PutHex4(char* thePlace, UINT32 theNumber)
{
   for (int i = 0; i < 4; ++i)
   {
      thePlace[i] = kHexDigits[theNumber >> (12 - 4 * i) & 0xF];
   }
}

bool IsControl(unsigned char theByte)
{
   return theByte < 0x20 || theByte == 0x7F;
}
} // namespace

DumpText::DumpText(LogStream& theLog) : itsLog(theLog) {}

void DumpText::Flush()
{
   Write();
   itsLog.flush();
}

DumpText& DumpText::Hex(UINT64 theNumber)
{
   char aBuffer[16];
   const std::to_chars_result aResult = std::to_chars(aBuffer, aBuffer + sizeof aBuffer, theNumber, 16);
   itsText.append(aBuffer, aResult.ptr);
   return *this;
}

DumpText& DumpText::HexByte(unsigned char theByte)
{
   const char aText[] = {'0', 'x', kHexDigits[theByte >> 4], kHexDigits[theByte & 0xF]};
   itsText.append(aText, sizeof aText);
   return *this;
}

DumpText& DumpText::Tag(UINT32 theTag)
{
   char aText[] = "(gggg, eeee)";
   PutHex4(aText + 1, theTag >> 16);
   PutHex4(aText + 7, theTag & 0xFFFF);
   itsText.append(aText, sizeof aText - 1);
   return *this;
}

DumpText& DumpText::Escaped(std::string_view theText)
{
   const std::size_t aStart = itsText.size();
   itsText += theText;
   for (std::size_t i = aStart; i < itsText.size(); ++i)
   {
      if (IsControl(static_cast<unsigned char>(itsText[i])))
      {
         itsText[i] = '.';
      }
   }
   return *this;
}

void DumpText::SetDepth(unsigned int theDepth)
{
   itsDepth = theDepth;
   itsPrefix.assign(4 * theDepth, ' ');
   if (theDepth > 0)
   {
      itsPrefix.append(theDepth, '>').append(1, ' ');
   }
}

void DumpText::Write()
{
   if (!itsText.empty())
   {
      itsLog.write(itsText.data(), static_cast<std::streamsize>(itsText.size()));
      itsText.clear();
   }
}
