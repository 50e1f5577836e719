#include "apps/tn/base/CharacterSet.h"

#include <gtest/gtest.h>

namespace
{
struct Row
{
   const char* itsName;
   const char* itsTerms;
   std::string itsText;
   const char* itsExpected;
};

// The names are the examples of PS3.5 annexes H to K.
const Row kNames[] = {
    {"plain", "", "Smith^John", "Smith^John"},
    {"not of the default repertoire", "", "M\xFCller", "M\xEF\xBF\xBDller"},
    {"Latin 1", "ISO_IR 100", "Buc^J\xE9r\xF4me", "Buc^Jérôme"},
    {"Cyrillic", "ISO_IR 144", "\xBB\xEEka", "Люka"},
    {"Greek", "ISO_IR 126", "\xC4\xE9\xEF\xED\xF5\xF3\xE9\xEF\xF2", "Διονυσιος"},
    {"UTF-8", "ISO_IR 192", "Wang^XiaoDong=王^小東=", "Wang^XiaoDong=王^小東="},
    {"GB18030", "GB18030", "Wang^XiaoDong=\xCD\xF5^\xD0\xA1\xB6\xAB=", "Wang^XiaoDong=王^小东="},
    {"kanji behind escapes", "\\ISO 2022 IR 87",
     "Yamada^Tarou=\x1b$B;3ED\x1b(B^\x1b$BB@O:\x1b(B=\x1b$B$d$^$@\x1b(B^\x1b$B$?$m$&\x1b(B",
     "Yamada^Tarou=山田^太郎=やまだ^たろう"},
    {"katakana as the first set", "ISO 2022 IR 13\\ISO 2022 IR 87",
     "\xD4\xCF\xC0\xDE^\xC0\xDB\xB3=\x1b$B;3ED\x1b(J^\x1b$BB@O:\x1b(J=\x1b$B$d$^$@\x1b(J^\x1b$B$?$m$&\x1b(J",
     "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎=やまだ^たろう"},
    {"Korean", "\\ISO 2022 IR 149",
     "Hong^Gildong=\x1b$)C\xFB\xF3^\x1b$)C\xD1\xCE\xD4\xD7=\x1b$)C\xC8\xAB^\x1b$)C\xB1\xE6\xB5\xBF",
     "Hong^Gildong=洪^吉洞=홍^길동"},
    {"a set ends at the delimiter of a name", "\\ISO 2022 IR 149", "\x1b$)C\xFB\xF3^\xD1\xCE",
     "洪^\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"an escape that is not known", "\\ISO 2022 IR 87", "a\x1bZb", "a\xEF\xBF\xBDZb"},
    {"cut in the middle of a character", "\\ISO 2022 IR 87", "\x1b$BB@O", "太\xEF\xBF\xBD"},
    {"a term that is not known", "ISO_IR 999", "abc\xE9", "abc\xEF\xBF\xBD"},
};
} // namespace

TEST(CharacterSet, NamesOfTheStandard)
{
   for (const Row& aRow : kNames)
   {
      EXPECT_EQ(CharacterSet(aRow.itsTerms).ToUTF8(aRow.itsText, true), aRow.itsExpected) << aRow.itsName;
   }
}

// The second byte of a character may be that of a backslash; only a backslash of ASCII delimits values.
TEST(CharacterSet, BackslashInACharacterIsNoDelimiter)
{
   EXPECT_EQ(CharacterSet("GBK").ToUTF8("\x81\\\\a"), "\u4E57\\a");
   EXPECT_EQ(CharacterSet("\\ISO 2022 IR 87").ToUTF8("\x1b$B!\\\x1b(B\\a"), "\uFF0B\\a");
}
