// One registered UID (PS3.6 annex A): what kind of thing it names, the UID, a short unique mnemonic, a description.
// Transfer syntaxes also tell their basic encoding. A value type.
#pragma once

#include "talvenor/dictionary/BasicTransferSyntaxKind.h"

class TALVENOR_API MUIDDictionaryEntry
{
public:
   using BasicTransferSyntaxType = BasicTransferSyntaxKind::BasicTransferSyntaxType;

   // The texts in dictionary files are the names of the enumerators.
   enum UIDType : int
   {
      InvalidUIDType = 0,
      TS = 1, // transfer syntax
      SC = 2, // SOP class
      MC = 3, // meta SOP class
      SI = 4, // well-known SOP instance
      AC = 5, // application context
      U1 = 6, // free for the author of the file
      U2 = 7  // free for the author of the file
   };

   // Throws InvalidUIDTypeException for a type outside TS to U2.
   MUIDDictionaryEntry(UIDType theType, BasicTransferSyntaxType theBasicType, const RWCString& theUID,
                       const RWCString& theMnemonic, const RWCString& theDescription);
   // From one line of a dictionary file: type, UID, mnemonic, description and, for TS, basic encoding. Throws
   // InvalidEntryDescriptionException whose text begins with the line.
   explicit MUIDDictionaryEntry(const RWCString& theLine);

   // All five fields.
   bool operator==(const MUIDDictionaryEntry& theOther) const = default;

   UIDType GetType() const { return itsType; }
   // UnknownBasicType for everything that is not a transfer syntax.
   BasicTransferSyntaxType GetBasicTransferSyntaxType() const { return itsBasicType; }
   const RWCString& GetUID() const { return itsUID; }
   const RWCString& GetMnemonic() const { return itsMnemonic; }
   const RWCString& GetDescription() const { return itsDescription; }

   static bool UIDTypeOK(int theType) { return theType >= TS && theType <= U2; }
   // Empty for an invalid value.
   static RWCString UIDTypeToString(UIDType theType);
   // InvalidUIDType for an unknown text; the case counts.
   static UIDType StringToUIDType(std::string_view theText);

private:
   UIDType itsType = InvalidUIDType;
   BasicTransferSyntaxType itsBasicType = BasicTransferSyntaxKind::UnknownBasicType;
   RWCString itsUID;
   RWCString itsMnemonic;
   RWCString itsDescription;
};
