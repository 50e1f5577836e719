// One attribute of a data dictionary (PS3.6 6): tag, value representation, value multiplicity, name, description.
// A value type. An entry that a dictionary holds is indexed under its tag and name: change those before adding it.
#pragma once

#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/dictionary/VRType.h"

class VR;

class TALVENOR_API MDDEntry : public MAttributeTag
{
public:
   // Rows of kVRTypes, in its order. The values from OW_or_OB on exist in dictionaries only.
   enum ValueType : int
   {
      AE,
      AS,
      AT,
      CS,
      DA,
      DS,
      DT,
      FL,
      FD,
      IS,
      LO,
      LT,
      OB,
      OF,
      OW,
      PN,
      SH,
      SL,
      SQ,
      SS,
      ST,
      TM,
      UI,
      UL,
      UN,
      US,
      UT,
      OW_or_OB,
      US_US_or_SS_US,
      US_or_SS,
      US_or_SS_or_OW,
      NONE
   };

   // Throw InvalidValueTypeException for a type outside AE to NONE.
   MDDEntry(const MAttributeTag& theTag, ValueType theType, UINT32 theVMMin, UINT32 theVMMax, const RWCString& theName,
            const RWCString& theDescription);
   MDDEntry(UINT16 theGroup, UINT16 theElement, ValueType theType, UINT32 theVMMin, UINT32 theVMMax,
            const RWCString& theName, const RWCString& theDescription);
   // From one line of a dictionary file: group, element, value representation, description, name, VM minimum, VM
   // maximum. Throws InvalidEntryDescriptionException with the line as its text when the line does not parse,
   // InvalidValueTypeException when its third field names no value type.
   explicit MDDEntry(const RWCString& theLine);

   ValueType GetType() const { return itsType; }
   UINT16 GetTypeAsUshort() const { return ValueTypeToUShort(itsType); }
   bool IsStringType() const { return IsStringType(itsType); }
   UINT32 VMMin() const { return itsVMMin; }
   UINT32 VMMax() const { return itsVMMax; }
   const RWCString& Name() const { return itsName; }
   const RWCString& Description() const { return itsDescription; }

   // Throws InvalidValueTypeException for a type outside AE to NONE.
   void SetType(ValueType theType);
   void VMMin(UINT32 theVMMin) { itsVMMin = theVMMin; }
   void VMMax(UINT32 theVMMax) { itsVMMax = theVMMax; }
   void Name(const RWCString& theName) { itsName = theName; }
   void Description(const RWCString& theDescription) { itsDescription = theDescription; }

   // Gives the element the code of this entry's type; ambiguous types are reduced to two letters.
   void SetVRType(VR& theVR) const;

   // 32 for a text that is none of the 32.
   static ValueType StringToValueType(std::string_view theText);
   // Empty for an invalid value.
   static RWCString ValueTypeToString(ValueType theType);
   // The two letters of the type as a number. UN for NONE and for invalid values.
   static UINT16 ValueTypeToUShort(ValueType theType)
   {
      return ValueTypeOK(theType) ? kVRTypes[theType].itsCode : VRCode::UN;
   }
   // AE to UT; 32 for a code that is none of them.
   static ValueType UShortToValueType(UINT16 theCode) { return static_cast<ValueType>(VRTypeNumber(theCode)); }
   // A text that is not exactly two characters counts as "UN".
   static UINT16 TypeStringToUShort(std::string_view theText);
   // The two characters, whatever they are.
   static RWCString UShortToTypeString(UINT16 theCode);
   // False for an invalid value.
   static bool IsStringType(ValueType theType) { return ValueTypeOK(theType) && kVRTypes[theType].itsIsString; }
   static bool ValueTypeOK(int theType) { return static_cast<unsigned int>(theType) < kVRTypeCount; }
   static unsigned int Hash(const MDDEntry& theEntry) { return theEntry.MAttributeTag::Hash(); }

   // An addition to what hosts need: the fields of a line as views into it, for readers of many lines.
   struct Fields
   {
      UINT16 itsGroup = 0;
      UINT16 itsElement = 0;
      ValueType itsType = NONE;
      UINT32 itsVMMin = 0;
      UINT32 itsVMMax = 0;
      std::string_view itsName;
      std::string_view itsDescription;
   };
   // False when the line does not parse. An unknown type is passed on as 32: it is for the caller to throw, before
   // faults of later fields, which is why parsing stops there and returns true.
   static bool Parse(std::string_view theLine, Fields& theFields);
   explicit MDDEntry(const Fields& theFields);

private:
   ValueType itsType;
   UINT32 itsVMMin;
   UINT32 itsVMMax;
   RWCString itsName;
   RWCString itsDescription;
};
