// What the parts of a print session have in common: film session, film boxes, image and other boxes, printer and print
// jobs. Each is a dataset, whose elements are its attributes, and an instance of a SOP class. Not locked beyond what a
// dataset is: one thread at a time.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dictionary/UID.h"

class AbstractPrintManagementMeta;

class TALVENOR_API PrintObject : public DICOMDataObject
{
public:
   // theMeta is borrowed and must outlive the object.
   explicit PrintObject(AbstractPrintManagementMeta& theMeta);
   PrintObject(const PrintObject&) = delete;
   PrintObject& operator=(const PrintObject&) = delete;
   ~PrintObject() override;

   AbstractPrintManagementMeta& GetMeta() const { return itsMeta; }

   // Empty until they are known.
   const UID& GetSOPClassUID() const { return itsSOPClassUID; }
   void SetSOPClassUID(const UID& theUID) { itsSOPClassUID = theUID; }
   const UID& GetSOPInstanceUID() const { return itsSOPInstanceUID; }
   void SetSOPInstanceUID(const UID& theUID) { itsSOPInstanceUID = theUID; }

   // Whether the instance exists at the printer: set when its N-CREATE has succeeded.
   int IsCreated() const { return itsIsCreated; }
   void SetCreated(int theFlag) { itsIsCreated = theFlag; }

   // Moves the elements of theSource, which is empty afterwards, into this dataset; those that are there already are
   // replaced, and numbers keep their value when the two differ in byte order.
   void Merge(DICOMDataObject& theSource);

private:
   AbstractPrintManagementMeta& itsMeta;
   UID itsSOPClassUID;
   UID itsSOPInstanceUID;
   int itsIsCreated = 0;
};

// The parts that another part owns, in their order.
template <class Part>
using PrintParts = std::vector<std::unique_ptr<Part>>;

// theNewOne is owned by theParts then; null is ignored.
template <class Part>
void AppendPart(PrintParts<Part>& theParts, Part* theNewOne)
{
   if (theNewOne != nullptr)
   {
      std::unique_ptr<Part> aPart(theNewOne);
      theParts.push_back(std::move(aPart));
   }
}
