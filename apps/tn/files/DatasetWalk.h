// Walks the structure of a dataset in a file from element to element, by seeking over the values (PS3.5 section 7):
// finds out whether it is whole before a byte of it is sent, and whose it is, in constant memory and little time.
//
// What has a stated length is stepped over, sequences and items too; those of undefined length and the fragments of
// encapsulated pixel data are followed to their delimiters.
#pragma once

#include <vector>

#include "apps/tn/files/DatasetSyntax.h"
#include "talvenor/foundation/BasicTypes.h"

class FileWindow;

class DatasetWalk
{
public:
   // theFile is borrowed; theStart is where its dataset begins. theSyntax is not one of hidden elements.
   DatasetWalk(FileWindow& theFile, UINT64 theStart, const DatasetSyntax& theSyntax);

   // Throws IncompleteDataset, saying where the file ends too early or what cannot stand where it stands.
   void Run();

   // Where the dataset ends: at the end of the file, or before trailing bytes that belong to no element.
   UINT64 GetEnd() const { return itsEnd; }

   // (0008,0016) and (0008,0018), without padding; empty when they are missing.
   const RWCString& GetSOPClassUID() const { return itsSOPClassUID; }
   const RWCString& GetSOPInstanceUID() const { return itsSOPInstanceUID; }

   // Whether its bytes are not to be sent as they are: a value has an odd length (PS3.5 7.1.1), or there are elements
   // of a command or of meta information.
   bool IsIrregular() const { return itsIsIrregular; }

private:
   enum class Kind
   {
      Dataset,
      Sequence,
      Item,
      Fragments
   };
   struct Level
   {
      Kind itsKind;
      DatasetSyntax itsSyntax;
      UINT32 itsTag; // of the sequence
   };
   struct Header
   {
      UINT32 itsTag;
      UINT16 itsVR; // 0 in implicit VR
      UINT32 itsLength;
   };

   Header ReadHeader();
   const unsigned char* Require(unsigned int theCount);
   bool TakeTop(const Header& theHeader);
   void TakeInSequence(const Header& theHeader);
   void TakeInItem(const Header& theHeader);
   void TakeElement(const Header& theHeader);
   void TakeUndefinedLength(const Header& theHeader);
   void TakeIdentity(const Header& theHeader);
   void StepOver(const Header& theHeader);
   void Enter(Kind theKind, const DatasetSyntax& theSyntax, UINT32 theTag);
   [[noreturn]] void Fail(const std::string& theText) const;
   std::string Place() const;

   FileWindow& itsFile;
   UINT64 itsPosition;
   UINT64 itsEnd = 0;
   std::vector<Level> itsLevels; // the innermost last
   RWCString itsSOPClassUID;
   RWCString itsSOPInstanceUID;
   bool itsIsIrregular = false;
};
