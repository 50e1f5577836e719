// The text of one dump on its way to a log stream: lines are composed in one buffer that is used over and over, and
// go to the stream in pieces of about 32 KiB, so that printing an element costs no allocation and no stream
// formatting. Not part of the library's interface.
#pragma once

#include <charconv>
#include <string>
#include <string_view>

#include "talvenor/foundation/BasicTypes.h"

class LogStream;

class DumpText
{
public:
   // theLog is borrowed. What is still in the buffer when the object goes is lost: end with Flush.
   explicit DumpText(LogStream& theLog);
   DumpText(const DumpText&) = delete;
   DumpText& operator=(const DumpText&) = delete;

   // Lines of the items of a sequence start with four blanks and one ">" for each sequence around them, then a blank.
   void EnterItem() { SetDepth(itsDepth + 1); }
   void LeaveItem() { SetDepth(itsDepth - 1); }

   void StartLine() { itsText += itsPrefix; }
   void EndLine()
   {
      itsText += '\n';
      WriteFullPiece();
   }
   void Flush();

   // For loops that may append much to one line.
   void WriteFullPiece()
   {
      if (itsText.size() >= kPiece)
      {
         Write();
      }
   }

   DumpText& operator<<(std::string_view theText)
   {
      itsText += theText;
      return *this;
   }
   DumpText& operator<<(char theCharacter)
   {
      itsText += theCharacter;
      return *this;
   }

   // Decimal. Floats: the shortest digits that read back as the same value.
   template <class T>
   DumpText& Number(T theNumber)
   {
      char aBuffer[32];
      const std::to_chars_result aResult = std::to_chars(aBuffer, aBuffer + sizeof aBuffer, theNumber);
      itsText.append(aBuffer, aResult.ptr);
      return *this;
   }

   // Lower-case digits without prefix and leading zeros.
   DumpText& Hex(UINT64 theNumber);
   DumpText& HexByte(unsigned char theByte); // "0x" and two digits
   DumpText& Tag(UINT32 theTag);             // "(gggg, eeee)"

   // Bytes from outside: control characters come out as ".", so that they cannot begin a new line.
   DumpText& Escaped(std::string_view theText);

private:
   static constexpr std::size_t kPiece = 32 * 1024;

   void SetDepth(unsigned int theDepth);
   void Write();

   LogStream& itsLog;
   unsigned int itsDepth = 0;
   std::string itsPrefix;
   std::string itsText;
};
