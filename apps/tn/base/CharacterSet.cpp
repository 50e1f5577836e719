#include "apps/tn/base/CharacterSet.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <utility>

#include <iconv.h>

namespace
{
constexpr char kEscape = 0x1B;
constexpr char kReplacement[] = "\xEF\xBF\xBD"; // U+FFFD

// A set of characters that an escape sequence selects, and the defined terms without and with code extensions for which
// it is the one at the beginning of a text (PS3.3 C.12-2 to C.12-4). Its bytes are handed to iconv behind itsPrefix.
struct CodeElement
{
   const char* itsSequence; // behind ESC
   bool itsIsUpper;         // G1, bytes from 0x80, rather than G0
   const char* itsEncoding; // null: ASCII
   const char* itsPrefix;
   const char* itsTerm;      // "ISO_IR n", the number alone; null for none
   bool itsIsInitial = true; // a text begins with it when it is the first term
};

constexpr CodeElement kCodeElements[] = {
    {"(B", false, nullptr, "", "6"},
    {"(J", false, nullptr, "", nullptr}, // JIS X 0201 Romaji: ASCII but for the yen sign and the overline
    {")I", true, "SHIFT_JIS", "", "13"},
    {"-A", true, "ISO-8859-1", "", "100"},
    {"-B", true, "ISO-8859-2", "", "101"},
    {"-C", true, "ISO-8859-3", "", "109"},
    {"-D", true, "ISO-8859-4", "", "110"},
    {"-L", true, "ISO-8859-5", "", "144"},
    {"-G", true, "ISO-8859-6", "", "127"},
    {"-F", true, "ISO-8859-7", "", "126"},
    {"-H", true, "ISO-8859-8", "", "138"},
    {"-M", true, "ISO-8859-9", "", "148"},
    {"-b", true, "ISO-8859-15", "", "203"},
    {"-T", true, "TIS-620", "", "166"},
    {"$)C", true, "EUC-KR", "", "149", false},
    {"$)A", true, "EUC-CN", "", "58", false},
    {"$(D", false, "ISO-2022-JP-2", "\x1b$(D", "159", false},
    {"$B", false, "ISO-2022-JP-2", "\x1b$B", "87", false},
    {"$@", false, "ISO-2022-JP-2", "\x1b$@", nullptr, false},
};

// Encodings without code extensions (PS3.3 C.12-5), which are whole.
struct WholeEncoding
{
   std::string_view itsTerm;
   const char* itsEncoding;
};
constexpr WholeEncoding kWholeEncodings[] = {{"ISO_IR 192", "UTF-8"}, {"GB18030", "GB18030"}, {"GBK", "GBK"}};

// A converter to UTF-8. They are kept for the thread: opening one reads a file.
class Converter
{
public:
   explicit Converter(const char* theEncoding) : itsDescriptor(::iconv_open("UTF-8", theEncoding)) {}
   Converter(const Converter&) = delete;
   Converter& operator=(const Converter&) = delete;
   ~Converter()
   {
      if (IsOpen())
      {
         ::iconv_close(itsDescriptor);
      }
   }

   bool IsOpen() const { return itsDescriptor != reinterpret_cast<iconv_t>(-1); }

   void Append(const std::string& theText, std::string& theResult)
   {
      if (!IsOpen())
      {
         theResult += kReplacement;
         return;
      }
      ::iconv(itsDescriptor, nullptr, nullptr, nullptr, nullptr);
      char* aFrom = const_cast<char*>(theText.data()); // iconv does not write there
      std::size_t aCount = theText.size();
      char aBuffer[512];
      while (aCount != 0)
      {
         char* aTo = aBuffer;
         std::size_t aRoom = sizeof aBuffer;
         const std::size_t aBefore = aCount;
         const bool isBad = ::iconv(itsDescriptor, &aFrom, &aCount, &aTo, &aRoom) == static_cast<std::size_t>(-1);
         theResult.append(aBuffer, aTo);
         if (isBad && (aTo == aBuffer || aRoom >= 16)) // not for want of room
         {
            theResult += kReplacement;
            ++aFrom;
            --aCount;
         }
         else if (aCount == aBefore)
         {
            return;
         }
      }
   }

private:
   iconv_t itsDescriptor;
};

void Convert(const char* theEncoding, const std::string& theText, std::string& theResult)
{
   thread_local std::map<const char*, Converter> aConverters;
   aConverters.try_emplace(theEncoding, theEncoding).first->second.Append(theText, theResult);
}

bool IsUpper(char theByte)
{
   return (static_cast<unsigned char>(theByte) & 0x80) != 0;
}

bool IsPlain(std::string_view theText)
{
   return std::none_of(theText.begin(), theText.end(),
                       [](char theByte) { return IsUpper(theByte) || theByte == kEscape; });
}

// Everything goes back to the beginning there (PS3.5 6.1.2.5.3).
bool EndsExtension(char theByte, bool theIsPersonName)
{
   return theByte == '\\' || theByte == '\r' || theByte == '\n' || theByte == '\f' || theByte == '\t' ||
          (theIsPersonName && (theByte == '^' || theByte == '='));
}

std::string_view Trim(std::string_view theText)
{
   const std::size_t aBegin = theText.find_first_not_of(' ');
   return aBegin == std::string_view::npos ? "" : theText.substr(aBegin, theText.find_last_not_of(' ') + 1 - aBegin);
}

// Decodes a text with code extensions. What is decoded together is a run of bytes of one half in one set.
class Decoder
{
public:
   explicit Decoder(const char* theUpperEncoding) : itsInitialUpper(theUpperEncoding), itsUpper(theUpperEncoding) {}

   std::string Decode(std::string_view theText, bool theIsPersonName)
   {
      for (std::size_t anIndex = 0; anIndex < theText.size(); ++anIndex)
      {
         const char aByte = theText[anIndex];
         if (aByte == kEscape)
         {
            anIndex += TakeEscape(theText.substr(anIndex + 1));
         }
         else if (IsDoubleByte(aByte) && anIndex + 1 < theText.size())
         {
            Add(aByte); // both: the second may look like a delimiter
            Add(theText[++anIndex]);
         }
         else
         {
            if (EndsExtension(aByte, theIsPersonName))
            {
               EndRun();
               itsLower = &kCodeElements[0];
               itsUpper = itsInitialUpper;
            }
            Add(aByte);
         }
      }
      EndRun();
      return std::move(itsResult);
   }

private:
   bool IsDoubleByte(char theByte) const { return itsLower->itsEncoding != nullptr && theByte > ' '; }

   // The number of bytes of the sequence behind the escape character; 0 for one that is not known.
   std::size_t TakeEscape(std::string_view theText)
   {
      EndRun();
      for (const CodeElement& anElement : kCodeElements)
      {
         const std::string_view aSequence = anElement.itsSequence;
         if (theText.substr(0, aSequence.size()) == aSequence)
         {
            if (anElement.itsIsUpper)
            {
               itsUpper = anElement.itsEncoding;
            }
            else
            {
               itsLower = &anElement;
            }
            return aSequence.size();
         }
      }
      itsResult += kReplacement;
      return 0;
   }

   void Add(char theByte)
   {
      if (IsUpper(theByte) != itsIsUpper)
      {
         EndRun();
         itsIsUpper = IsUpper(theByte);
      }
      itsBytes += theByte;
   }

   void EndRun()
   {
      const char* const anEncoding = itsIsUpper ? itsUpper : itsLower->itsEncoding;
      if (anEncoding != nullptr && !itsBytes.empty())
      {
         Convert(anEncoding, itsIsUpper ? itsBytes : itsLower->itsPrefix + itsBytes, itsResult);
      }
      else if (itsIsUpper)
      {
         for (std::size_t anIndex = 0; anIndex < itsBytes.size(); ++anIndex)
         {
            itsResult += kReplacement;
         }
      }
      else
      {
         itsResult += itsBytes;
      }
      itsBytes.clear();
   }

   const char* itsInitialUpper;
   const char* itsUpper; // encoding of G1, null for none
   const CodeElement* itsLower = &kCodeElements[0];
   bool itsIsUpper = false; // the run
   std::string itsBytes;
   std::string itsResult;
};
} // namespace

CharacterSet::CharacterSet(std::string_view theDefinedTerms)
{
   const std::string_view aFirst = Trim(theDefinedTerms.substr(0, theDefinedTerms.find('\\')));
   for (const WholeEncoding& aWhole : kWholeEncodings)
   {
      if (aFirst == aWhole.itsTerm)
      {
         itsWholeEncoding = aWhole.itsEncoding;
         return;
      }
   }
   for (const std::string_view aKind : {"ISO_IR ", "ISO 2022 IR "})
   {
      if (aFirst.substr(0, aKind.size()) != aKind)
      {
         continue;
      }
      const auto* const anElement =
          std::find_if(std::begin(kCodeElements), std::end(kCodeElements), [&](const CodeElement& theElement) {
             return theElement.itsTerm != nullptr && theElement.itsIsInitial && theElement.itsIsUpper &&
                    aFirst.substr(aKind.size()) == theElement.itsTerm;
          });
      itsUpperEncoding = anElement == std::end(kCodeElements) ? nullptr : anElement->itsEncoding;
   }
}

std::string CharacterSet::ToUTF8(std::string_view theText, bool theIsPersonName) const
{
   if (IsPlain(theText))
   {
      return std::string(theText);
   }
   if (itsWholeEncoding != nullptr)
   {
      std::string aResult;
      Convert(itsWholeEncoding, std::string(theText), aResult);
      return aResult;
   }
   return Decoder(itsUpperEncoding).Decode(theText, theIsPersonName);
}
