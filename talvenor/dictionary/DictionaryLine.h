// Lines of the dictionary files and their comma-separated fields; the attribute, UID and private index files share
// the format. Internal to this folder. Everything is a view into the caller's text.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

// Cuts fields off the front of a line. A field is either a non-empty run of characters without commas, or text
// without double quotes between double quotes; blanks around it and one pair of enclosing quotes are not part of it.
class DictionaryLine
{
public:
   explicit DictionaryLine(std::string_view theLine) : itsRest(theLine) {}

   // The next field, which a comma must end. False when there is none; a field in quotes may be empty.
   bool Field(std::string_view& theField);
   // What is left of the line. It may be empty.
   std::string_view LastField();

private:
   std::string_view itsRest;
};

// Reads a stream in blocks and hands out its lines without line feed, without one carriage return before that
// (files written on other systems) and without leading blanks. The last line need not end in a line feed.
class DictionaryLineReader
{
public:
   explicit DictionaryLineReader(std::istream& theStream);

   // False at the end. The view is good until the next call.
   bool Next(std::string_view& theLine);
   // The number of the line handed out last, from 1.
   unsigned int Number() const { return itsNumber; }
   // True when the end was a failure of the device behind the stream.
   bool Failed() const;

private:
   bool Fill();

   std::istream& itsStream;
   std::string itsBuffer;
   std::size_t itsPosition = 0; // first byte not yet handed out
   unsigned int itsNumber = 0;
};

// True for an empty line and for a comment.
bool IsSkippedDictionaryLine(std::string_view theLine);

// Opens a dictionary file for reading. False for an empty name, a folder, a file that cannot be opened.
bool OpenDictionaryFile(const std::string& theFileName, std::ifstream& theStream);
