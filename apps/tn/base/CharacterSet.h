// The text of datasets in UTF-8. A dataset says in Specific Character Set (0008,0005) how its text is encoded (PS3.3
// C.12.1.1.2); with code extensions (ISO 2022) escape sequences change the set within a text (PS3.5 6.1.2.5).
#pragma once

#include <string>
#include <string_view>

class CharacterSet
{
public:
   // theDefinedTerms is the element's value, backslashes included; empty for the default repertoire. A term that is not
   // known stands for the default repertoire.
   explicit CharacterSet(std::string_view theDefinedTerms);

   // Decodes a whole value, or several with the backslashes between them: a backslash in the result is a delimiter.
   // What cannot be decoded becomes U+FFFD. theIsPersonName: the delimiters of its parts end an extension, too.
   std::string ToUTF8(std::string_view theText, bool theIsPersonName = false) const;

private:
   const char* itsWholeEncoding = nullptr; // of sets without extensions that are more than ASCII and G1
   const char* itsUpperEncoding = nullptr; // of the bytes from 0x80 at the beginning of a text; null for none
};
