// Walks a dataset in ascending tag order, inherited elements included, and puts group length elements where the
// encoding wants them. The elements returned stay the property of the dataset or of the iterator; a group length lives
// until the next First. Elements may be pushed and removed between two calls of Next.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/GroupLengthEncodingType.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMObject;
class VR;

class TALVENOR_API DICOMObjectIterator
{
public:
   // theObject is borrowed and must outlive the iterator.
   DICOMObjectIterator(const DICOMObject& theObject, GroupLengthEncodingType theType);
   ~DICOMObjectIterator();
   DICOMObjectIterator(const DICOMObjectIterator&) = delete;
   DICOMObjectIterator& operator=(const DICOMObjectIterator&) = delete;

   // Starts again and returns the first element; null when there is none.
   VR* First();

   // The next element, null at the end. Without a First before it, it starts at the beginning.
   VR* Next();

   // For the elements still to come.
   void SetGroupLengthEncoding(GroupLengthEncodingType theType);

private:
   VR* MakeGroupLength(UINT16 theGroup);

   const DICOMObject& itsObject;
   GroupLengthEncodingType itsType;
   DICOMNodeCursor itsCursor;
   std::vector<std::unique_ptr<VR>> itsGroupLengths;
   int itsCurrentGroup = -1; // the group of the element returned last
};
