// A dataset: data elements (VR) in ascending order of their tags, each tag once (PS3.5 7.1). DICOMDataObject is a data
// set, DICOMCommandObject a command set. Decoders fill one by Push, encoders walk it with a DICOMObjectIterator, and
// everybody else reads it through the typed getters.
//
// Threads: every operation holds the dataset's recursive lock from start to end; Lock and Unlock make several of them
// one. References and pointers that an operation returned are guarded by nothing once it has ended. The items of a
// sequence belong to the dataset: threads that share it hold its lock, not that of an item alone, while they work on an
// item. Dumping depends on it: it takes the lock of the dataset, then the log, then the locks of the items.
//
// Ownership: an element given to Push belongs to the dataset, also when Push refuses it (it is destroyed then). GetVR
// and iterators lend elements; RemoveVR and Pop hand them over.
//
// Group lengths (gggg,0000) are never stored: iterators make them.
#pragma once

#include <forward_list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "talvenor/dataset/DICOMFileType.h"
#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/dataset/GroupLengthEncodingType.h"
#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/CriticalSection.h"
#include "talvenor/foundation/TNResult.h"
#include "talvenor/io/TNEndian.h"

class DICOMCluster;
class DICOMDataObject;
class DICOMObjectIterator;
class InstanceSpecificDataDictionary;
class LogStream;
class UID;
class VR;

class TALVENOR_API DICOMObject
{
public:
   enum DICOMObjectType
   {
      CommandObject = 0,
      DataObject = 1
   };

   // theEndian is the byte order in which the typed getters read values; elements are expected to be stored in it.
   explicit DICOMObject(TNEndian::EndianType theEndian);

   // Deep: byte order, every element (inherited ones and group 0000 included) and the dictionary with its private-block
   // allocations, as one moment of theOther shows them. The scratchpad is not copied. When an assignment runs out of
   // memory while it copies, this dataset is unchanged.
   DICOMObject(const DICOMObject& theOther);
   DICOMObject& operator=(const DICOMObject& theOther);

   virtual ~DICOMObject();

   virtual DICOMObjectType GetType() const = 0;

   // Typed getters. Each returns 1 and the value, or 0 when the name, creator, block or element is missing or its value
   // does not fit (see VRAccess for what each accepts). An element is addressed by
   //    tag;
   //    private creator and attribute name, as the private dictionary has it;
   //    private creator, element number within its block (low 8 bits), result, group;
   //    attribute name of the public dictionary;
   //    group and element number.
   virtual int GetUINT16(const MAttributeTag& theTag, UINT16& theValue) const;
   virtual int GetUINT16(const RWCString& theCreator, const RWCString& theName, UINT16& theValue) const;
   virtual int GetUINT16(const RWCString& theCreator, UINT16 theElement, UINT16& theValue, UINT16 theGroup) const;
   virtual int GetUINT16(const RWCString& theName, UINT16& theValue) const;
   virtual int GetUINT16(UINT16 theGroup, UINT16 theElement, UINT16& theValue) const;

   // Appends an item to the sequence that was pushed last. Returns 0, and destroys the item, when the element pushed
   // last is no sequence.
   virtual int Push(DICOMDataObject* theItem);

   // Stores an element, replacing (and destroying) one with the same tag. A value that still sits in a stream is read
   // first; what its stream throws passes through, and what had been read by then is kept. A group length is destroyed
   // and 1 returned. A private creator is registered with the dictionary; when its block or its name is taken already
   // and the tag exists, it is destroyed and 0 returned.
   virtual int Push(VR* theVR);

   virtual UINT32 Entries() const; // inherited elements included
   virtual VR* Pop();              // removes and hands over the element with the smallest tag; null when empty
   virtual void Reset();           // back to empty; byte order, dictionary and lock stay

   // Replaces theGroups by the distinct group numbers from theLow to theHigh, both included, in ascending order.
   virtual void ListGroupsInRange(std::vector<int>& theGroups, int theLow, int theHigh, bool theSkipOdd) const;

   // Whether the creator holds a block in the group.
   virtual int HasPrivateBlock(const RWCString& theCreator, UINT16 theGroup) const;
   virtual int RemoveGroup(UINT16 theGroup); // 1 if there was an element of it

   virtual int GetINT16(const MAttributeTag& theTag, INT16& theValue) const;
   virtual int GetINT16(const RWCString& theCreator, const RWCString& theName, INT16& theValue) const;
   virtual int GetINT16(const RWCString& theCreator, UINT16 theElement, INT16& theValue, UINT16 theGroup) const;
   virtual int GetINT16(const RWCString& theName, INT16& theValue) const;
   virtual int GetINT16(UINT16 theGroup, UINT16 theElement, INT16& theValue) const;

   virtual int GetINT32(const MAttributeTag& theTag, INT32& theValue) const;
   virtual int GetINT32(const RWCString& theCreator, const RWCString& theName, INT32& theValue) const;
   virtual int GetINT32(const RWCString& theCreator, UINT16 theElement, INT32& theValue, UINT16 theGroup) const;
   virtual int GetINT32(const RWCString& theName, INT32& theValue) const;
   virtual int GetINT32(UINT16 theGroup, UINT16 theElement, INT32& theValue) const;

   virtual int GetUINT32(const MAttributeTag& theTag, UINT32& theValue) const;
   virtual int GetUINT32(const RWCString& theCreator, const RWCString& theName, UINT32& theValue) const;
   virtual int GetUINT32(const RWCString& theCreator, UINT16 theElement, UINT32& theValue, UINT16 theGroup) const;
   virtual int GetUINT32(const RWCString& theName, UINT32& theValue) const;
   virtual int GetUINT32(UINT16 theGroup, UINT16 theElement, UINT32& theValue) const;

   virtual int GetINT64(const MAttributeTag& theTag, INT64& theValue) const;
   virtual int GetINT64(const RWCString& theCreator, const RWCString& theName, INT64& theValue) const;
   virtual int GetINT64(const RWCString& theCreator, UINT16 theElement, INT64& theValue, UINT16 theGroup) const;
   virtual int GetINT64(UINT16 theGroup, UINT16 theElement, INT64& theValue) const;

   virtual int GetUINT64(const MAttributeTag& theTag, UINT64& theValue) const;
   virtual int GetUINT64(const RWCString& theCreator, const RWCString& theName, UINT64& theValue) const;
   virtual int GetUINT64(const RWCString& theCreator, UINT16 theElement, UINT64& theValue, UINT16 theGroup) const;
   virtual int GetUINT64(UINT16 theGroup, UINT16 theElement, UINT64& theValue) const;

   virtual int GetFLOAT(const MAttributeTag& theTag, FLOAT& theValue) const;
   virtual int GetFLOAT(const RWCString& theCreator, const RWCString& theName, FLOAT& theValue) const;
   virtual int GetFLOAT(const RWCString& theCreator, UINT16 theElement, FLOAT& theValue, UINT16 theGroup) const;
   virtual int GetFLOAT(const RWCString& theName, FLOAT& theValue) const;
   virtual int GetFLOAT(UINT16 theGroup, UINT16 theElement, FLOAT& theValue) const;

   virtual int GetDOUBLE(const MAttributeTag& theTag, DOUBLE& theValue) const;
   virtual int GetDOUBLE(const RWCString& theCreator, const RWCString& theName, DOUBLE& theValue) const;
   virtual int GetDOUBLE(const RWCString& theCreator, UINT16 theElement, DOUBLE& theValue, UINT16 theGroup) const;
   virtual int GetDOUBLE(const RWCString& theName, DOUBLE& theValue) const;
   virtual int GetDOUBLE(UINT16 theGroup, UINT16 theElement, DOUBLE& theValue) const;

   // Capacities are in bytes. Strings come without trailing spaces and NULs.
   virtual int GetString(const MAttributeTag& theTag, RWCString& theText) const;
   virtual int GetString(const MAttributeTag& theTag, char* theBuffer, unsigned int theCapacity) const;
   virtual int GetString(const RWCString& theCreator, const RWCString& theName, RWCString& theText) const;
   virtual int GetString(const RWCString& theCreator, const RWCString& theName, char* theBuffer,
                         unsigned int theCapacity) const;
   virtual int GetString(const RWCString& theCreator, UINT16 theElement, RWCString& theText, UINT16 theGroup) const;
   virtual int GetString(const RWCString& theCreator, UINT16 theElement, char* theBuffer, unsigned int theCapacity,
                         UINT16 theGroup) const;
   virtual int GetString(const RWCString& theName, RWCString& theText) const;
   virtual int GetString(UINT16 theGroup, UINT16 theElement, RWCString& theText) const;
   virtual int GetString(UINT16 theGroup, UINT16 theElement, char* theBuffer, unsigned int theCapacity) const;
   virtual int GetString(const RWCString& theName, char* theBuffer, unsigned int theCapacity) const;

   // The copying forms return a new array that the caller frees with delete[].
   virtual int GetStringCopy(const MAttributeTag& theTag, char*& theText) const;
   virtual int GetStringCopy(const RWCString& theCreator, const RWCString& theName, char*& theText) const;
   virtual int GetStringCopy(const RWCString& theCreator, UINT16 theElement, char*& theText, UINT16 theGroup) const;
   virtual int GetStringCopy(UINT16 theGroup, UINT16 theElement, char*& theText) const;

   virtual int GetBytes(const MAttributeTag& theTag, unsigned char* theBuffer, unsigned int theCapacity) const;
   virtual int GetBytes(const RWCString& theCreator, const RWCString& theName, unsigned char* theBuffer,
                        unsigned int theCapacity) const;
   virtual int GetBytes(const RWCString& theCreator, UINT16 theElement, unsigned char* theBuffer,
                        unsigned int theCapacity, UINT16 theGroup) const;
   virtual int GetBytes(UINT16 theGroup, UINT16 theElement, unsigned char* theBuffer, unsigned int theCapacity) const;

   virtual int GetBytesCopy(const MAttributeTag& theTag, unsigned char*& theBytes) const;
   virtual int GetBytesCopy(const RWCString& theCreator, const RWCString& theName, unsigned char*& theBytes) const;
   virtual int GetBytesCopy(const RWCString& theCreator, UINT16 theElement, unsigned char*& theBytes,
                            UINT16 theGroup) const;
   virtual int GetBytesCopy(UINT16 theGroup, UINT16 theElement, unsigned char*& theBytes) const;

   virtual int GetWords(const MAttributeTag& theTag, UINT16* theBuffer, unsigned int theCapacity) const;
   virtual int GetWords(const RWCString& theCreator, const RWCString& theName, UINT16* theBuffer,
                        unsigned int theCapacity) const;
   virtual int GetWords(const RWCString& theCreator, UINT16 theElement, UINT16* theBuffer, unsigned int theCapacity,
                        UINT16 theGroup) const;
   virtual int GetWords(UINT16 theGroup, UINT16 theElement, UINT16* theBuffer, unsigned int theCapacity) const;

   virtual int GetWordsCopy(const MAttributeTag& theTag, UINT16*& theWords) const;
   virtual int GetWordsCopy(const RWCString& theCreator, const RWCString& theName, UINT16*& theWords) const;
   virtual int GetWordsCopy(const RWCString& theCreator, UINT16 theElement, UINT16*& theWords, UINT16 theGroup) const;
   virtual int GetWordsCopy(UINT16 theGroup, UINT16 theElement, UINT16*& theWords) const;

   using TagList = RWTValOrderedVector<MAttributeTag>;
   virtual int GetAttributeList(const MAttributeTag& theTag, TagList& theTags) const;
   virtual int GetAttributeList(const RWCString& theCreator, const RWCString& theName, TagList& theTags) const;
   virtual int GetAttributeList(const RWCString& theCreator, UINT16 theElement, TagList& theTags,
                                UINT16 theGroup) const;
   virtual int GetAttributeList(UINT16 theGroup, UINT16 theElement, TagList& theTags) const;

   // Whether the element exists, and whether it exists and has a value.
   virtual int HasAttribute(const MAttributeTag& theTag) const;
   virtual int HasAttribute(const RWCString& theCreator, const RWCString& theName) const;
   virtual int HasAttribute(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const;
   virtual int HasAttribute(UINT16 theGroup, UINT16 theElement) const;
   virtual int HasNonNullAttribute(const MAttributeTag& theTag) const;
   virtual int HasNonNullAttribute(const RWCString& theCreator, const RWCString& theName) const;
   virtual int HasNonNullAttribute(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const;
   virtual int HasNonNullAttribute(UINT16 theGroup, UINT16 theElement) const;

   // Unlinks the element; the caller owns it. Null when there is none.
   virtual VR* RemoveVR(const MAttributeTag& theTag);
   virtual VR* RemoveVR(const RWCString& theCreator, const RWCString& theName);
   virtual VR* RemoveVR(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup);
   virtual VR* RemoveVR(UINT16 theGroup, UINT16 theElement);
   virtual void RemoveVRList(const TagList& theTags); // removes and destroys

   // Prints the dataset to gTNTracer or to theLog as one uninterrupted text.
   virtual void Dump() const;
   virtual void Dump(LogStream& theLog) const;

   // The value itself, 0 when it is absent or not of 2 bytes.
   UINT16 GetUINT16(UINT16 theGroup, UINT16 theElement) const;

   // The stored element, lent; null when there is none. An inherited one (see DICOMCluster) must not be changed.
   VR* GetVR(const MAttributeTag& theTag) const;
   VR* GetVR(UINT16 theGroup, UINT16 theElement) const;
   VR* GetVR(const RWCString& theCreator, const RWCString& theName) const;
   VR* GetVR(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const;

   // A private element for the creator's block, which is allocated (with its creator element) when it has none. The
   // group is the one of the creator's private dictionary. Returns 0, and destroys theVR, when there is no such
   // dictionary, the group differs, no block is free or the element's type contradicts the dictionary (a block that was
   // allocated for it stays). The form with a name takes element number and type from the named entry.
   int Push(const RWCString& theCreator, VR* theVR);
   int Push(const RWCString& theCreator, const RWCString& theName, VR* theVR);

   int ReplaceVR(VR* theVR) { return Push(theVR); }
   int ReplaceVR(const RWCString& theCreator, VR* theVR) { return Push(theCreator, theVR); }

   // Appends an item made of the elements of theElements, which become the item's and are taken out of the list, to the
   // sequence, which is made if it is missing. Nothing happens when the tag holds an element that is no sequence.
   void AddSequenceItem(UINT16 theGroup, UINT16 theElement, std::forward_list<VR*>& theElements);

   // Appends an item that references an instance, (0008,1150) and (0008,1155), unless the sequence has it already.
   void AddReferenceSequence(UINT16 theGroup, UINT16 theElement, const RWCString& theClassUID,
                             const RWCString& theInstanceUID);

   int IsEmpty() const { return Entries() == 0; }

   // The encoded length in bytes of the elements of the group, and of the dataset with its group length elements.
   // Saturates at 0xFFFFFFFF.
   UINT32 GetGroupLength(UINT16 theGroup, GroupLengthEncodingType theType) const;
   UINT32 GetEncodedLength(GroupLengthEncodingType theType) const;

   // The dataset's own iterator, made on first use; only its type is switched. A second walk at the same time needs an
   // iterator of its own.
   DICOMObjectIterator& GetIterator(GroupLengthEncodingType theType) const;

   // Equal tags with equal values, element by element.
   int ValueEquals(const DICOMObject& theOther) const;

   // Notes by name that travel with the dataset in memory and are never encoded. Get and Remove return 1 when the name
   // is there.
   void PutScratchpadValue(const RWCString& theName, const RWCString& theValue);
   int GetScratchpadValue(const RWCString& theName, RWCString& theValue) const;
   int RemoveScratchpadValue(const RWCString& theName);

   // Replaces the contents by those of a file (PS3.10) and takes over its byte order. Returns 1, or 0 with the cause in
   // theResult and theSystemError; what had been read by then stays. A file that cannot be opened gets 2.4 seconds to
   // appear; when it does not, the dataset is unchanged and nothing is logged. theFileSize is in bytes. Loading stops
   // before the first element whose group is at least theStopGroup and whose element number is at least theStopElement
   // (0 for no limit). With theKnownTagsOnly, private elements are kept only where a private dictionary knows their
   // creator. With a cluster, the dataset is normalised into it.
   int LoadFromFile(const RWCString& theFileName, UINT32& theFileSize, TNResultCode& theResult, int& theSystemError,
                    UINT16 theStopGroup = 0, UINT16 theStopElement = 0, int theKnownTagsOnly = 0,
                    DICOMCluster* theCluster = nullptr);
   int LoadFromFile(const RWCString& theFileName, TNResultCode& theResult, int& theSystemError);
   int LoadFromFile(const RWCString& theFileName);

   // Writes the dataset to a file (PS3.10) with meta information for these UIDs; an empty one is taken from the
   // dataset, (0008,0016) or (0008,0018). Returns 1, or 0 with the cause in theResult and theSystemError and a line in
   // the error log: the file is then untouched when the fault is in what was asked for, and not whole when writing
   // failed. theTransferSyntax, borrowed, may be null; pixel data is not compressed or decompressed for it.
   // theImplementation has no effect: the file names this library as its writer.
   int SaveToFile(const RWCString& theFileName, DICOMFileType theType, const RWCString& theImplementation,
                  TNResultCode& theResult, int& theSystemError, const RWCString& theSOPClassUID = RWCString(),
                  const RWCString& theSOPInstanceUID = RWCString(), const UID* theTransferSyntax = nullptr);
   int SaveToFile(const RWCString& theFileName, DICOMFileType theType, TNResultCode& theResult, int& theSystemError);
   int SaveToFile(const RWCString& theFileName, DICOMFileType theType,
                  const RWCString& theImplementation = RWCString());

   // The dictionary that types elements and records private blocks; by default one over the default dictionaries. The
   // pointer form adopts, the reference form borrows (it must outlive the dataset), the const reference form copies.
   void SetDataDictionary(InstanceSpecificDataDictionary* theDictionary);
   void SetDataDictionary(InstanceSpecificDataDictionary& theDictionary);
   void SetDataDictionary(const InstanceSpecificDataDictionary& theDictionary);
   InstanceSpecificDataDictionary& GetDataDictionary();
   const InstanceSpecificDataDictionary& GetDataDictionary() const;

   // Whether the dataset has a dictionary already: until then it knows what the process-wide default one knows.
   bool HasDataDictionary() const;

   TNEndian::EndianType GetEndian() const;
   void SetEndian(TNEndian::EndianType theEndian); // stored bytes stay as they are

   // DICOMObjectLock does the two for a scope.
   void Lock() const { itsLock.Enter(); }
   void Unlock() const { itsLock.Leave(); }

   // The element store, for iterators and clusters; guarded by the dataset's lock.
   DICOMNode& GetNode() { return itsNode; }
   const DICOMNode& GetNode() const { return itsNode; }

private:
   using Scratchpad = std::unordered_map<RWCString, RWCString>;
   struct Contents;

   // The forms of addressing come down to a tag; kNoTag when there is no such attribute. Group lengths are never
   // stored, so their lowest tag is free to mean "none".
   static constexpr UINT32 kNoTag = 0;
   static UINT32 TagOf(UINT16 theGroup, UINT16 theElement) { return static_cast<UINT32>(theGroup) << 16 | theElement; }
   static UINT32 TagOf(const MAttributeTag& theTag) { return theTag.GetTag(); }
   UINT32 TagOf(const RWCString& theName) const;
   UINT32 TagOf(const RWCString& theCreator, const RWCString& theName) const;
   UINT32 TagOf(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const;

   // Finds the element and lets theRead read it through an accessor of the dataset's byte order; 0 without an element.
   template <class Reader, class... Address>
   int Read(const Reader& theRead, const Address&... theAddress) const;

   Contents CopyContents() const;
   void Fill(Contents theContents);
   int PushMaterialised(std::unique_ptr<VR> theStreamVR);
   int RegisterCreator(const VR& theVR);
   int PlaceInBlock(const RWCString& theCreator, VR& theVR);
   UINT16 AllocateBlock(const RWCString& theCreator, UINT16 theGroup);
   void RegisterStoredCreators(UINT16 theGroup);
   int TypePrivate(VR& theVR) const;
   bool CanHoldItems(UINT32 theTag) const;
   void AppendItem(UINT16 theGroup, UINT16 theElement, std::unique_ptr<DICOMDataObject> theItem);

   UINT32 itsLastPushed = kNoTag; // items that are pushed go to the own element of this tag
   TNEndian::EndianType itsEndian;
   mutable std::unique_ptr<DICOMObjectIterator> itsIterator;
   mutable InstanceSpecificDataDictionary* itsDictionary = nullptr; // null until it is needed
   mutable std::unique_ptr<InstanceSpecificDataDictionary> itsOwnDictionary;
   std::unique_ptr<Scratchpad> itsScratchpad; // null while empty
   mutable CriticalSection itsLock;
   DICOMNode itsNode;
};
