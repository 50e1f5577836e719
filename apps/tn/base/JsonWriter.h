// Writes JSON (RFC 8259): members and elements in the order of the calls. Commas and quotes are its work, that every
// Begin has its End is the caller's. Names are left out inside arrays.
#pragma once

#include <concepts>
#include <ostream>
#include <string>

class JsonWriter
{
public:
   // theOutput is borrowed. Nothing ends the line at the end.
   explicit JsonWriter(std::ostream& theOutput) : itsOutput(theOutput) {}

   void BeginObject(const std::string& theName = std::string()) { Begin(theName, '{'); }
   void EndObject() { End('}'); }
   void BeginArray(const std::string& theName = std::string()) { Begin(theName, '['); }
   void EndArray() { End(']'); }

   // Bytes that are not UTF-8 are written as U+FFFD.
   void Text(const std::string& theName, const std::string& theText);
   void Number(const std::string& theName, std::integral auto theNumber)
   {
      Name(theName);
      itsOutput << +theNumber;
   }
   void Number(const std::string& theName, double theNumber); // three decimals

private:
   void Name(const std::string& theName);
   void Quoted(const std::string& theText);
   void Begin(const std::string& theName, char theBracket);
   void End(char theBracket);

   std::ostream& itsOutput;
   bool itsIsFirst = true; // in its object or array
};
