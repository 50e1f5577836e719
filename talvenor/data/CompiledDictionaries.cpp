#include "talvenor/data/CompiledDictionaries.h"

#include <istream>
#include <streambuf>

#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/foundation/TNXInitializer.h"

// The assembler takes the files in: an array of half a million numbers would take the compiler a minute. The names are
// relative to its include path, so that no path of the machine that builds is kept.
asm(".pushsection .rodata\n"
    ".global TalvenorAttributesBegin, TalvenorAttributesEnd, TalvenorUIDsBegin, TalvenorUIDsEnd\n"
    ".hidden TalvenorAttributesBegin\n"
    ".hidden TalvenorAttributesEnd\n"
    ".hidden TalvenorUIDsBegin\n"
    ".hidden TalvenorUIDsEnd\n"
    "TalvenorAttributesBegin: .incbin \"dicom.dic\"\n"
    "TalvenorAttributesEnd:\n"
    "TalvenorUIDsBegin: .incbin \"uid.dic\"\n"
    "TalvenorUIDsEnd:\n"
    ".popsection\n");

extern "C" {
extern const char TalvenorAttributesBegin[] __attribute__((visibility("hidden")));
extern const char TalvenorAttributesEnd[] __attribute__((visibility("hidden")));
extern const char TalvenorUIDsBegin[] __attribute__((visibility("hidden")));
extern const char TalvenorUIDsEnd[] __attribute__((visibility("hidden")));
}

namespace
{
std::string_view Between(const char* theBegin, const char* theEnd)
{
   return {theBegin, static_cast<std::size_t>(theEnd - theBegin)};
}

// A text as a stream, without a copy.
class TextBuffer : public std::streambuf
{
public:
   explicit TextBuffer(std::string_view theText)
   {
      char* const aBegin = const_cast<char*>(theText.data()); // is only read
      setg(aBegin, aBegin, aBegin + theText.size());
   }
};

bool LoadText(bool (*theSetter)(std::istream&), std::string_view theText)
{
   TextBuffer aBuffer(theText);
   std::istream aStream(&aBuffer);
   return theSetter(aStream);
}
} // namespace

std::string_view CompiledDictionaries::GetAttributes()
{
   return Between(TalvenorAttributesBegin, TalvenorAttributesEnd);
}

std::string_view CompiledDictionaries::GetUIDs()
{
   return Between(TalvenorUIDsBegin, TalvenorUIDsEnd);
}

bool CompiledDictionaries::Load()
{
   try
   {
      return LoadText(TNXInitializer::SetDataDictionary, GetAttributes()) &&
             LoadText(TNXInitializer::SetUIDDictionary, GetUIDs());
   }
   catch (const ExceptionBase&)
   {
      return false;
   }
}
