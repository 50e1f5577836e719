// Attribute matching (PS3.4 C.2.2.2): the value of one key of an identifier against the values of an attribute, both in
// UTF-8 and without padding, with backslashes between several values.
//
// Universal matching          no value, or only "*": everything matches, also an attribute without value
// List of UID matching        UI: any of the values
// Wild card matching          "*" and "?" (one character) in text, code strings and titles
// Range matching              DA, TM and DT: "a-b", "a-" and "-b", both ends included
// Single value matching       everything else. Person names match whatever their case, by component group, and without
//                             regard to empty components at their end; times and numbers are compared as such.
//
// A key with several values matches what one of them matches, as an attribute of several values matches with one.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class ValueMatcher
{
public:
   // A date or time that is none, for example. The text says what is wrong with the value.
   class BadKey : public std::runtime_error
   {
   public:
      using std::runtime_error::runtime_error;
   };

   // theType is the type code of the attribute (VRCode). Throws BadKey.
   ValueMatcher(UINT16 theType, const std::string& theKey);

   bool IsUniversal() const { return itsKeys.empty(); }

   bool Matches(std::string_view theValues) const;

   // The values one of which an attribute has if it matches, or none when that cannot be said (wild cards, ranges,
   // names, times): what an index can look up.
   std::vector<std::string> GetExactValues() const;

   // A person name as it is compared: lower case, without empty ends.
   static std::string FoldName(std::string_view theName);

private:
   enum class Kind
   {
      Exact,
      Pattern,
      Name,
      Moment, // a date or time, or a range of them
      Number
   };
   struct Key
   {
      std::string itsText; // of Kind::Moment the first that matches, of a name folded
      std::string itsLast; // of Kind::Moment
   };

   static Kind KindOf(UINT16 theType, const std::string& theKey);
   Key MakeKey(const std::string& theText) const;
   bool Matches(const Key& theKey, std::string_view theValue) const;

   UINT16 itsType;
   Kind itsKind;
   std::vector<Key> itsKeys;
};
