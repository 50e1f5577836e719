// The sequences by which the parts of a print session reference each other (PS3.3 C.13), and child lists that follow
// them. Not part of the library's interface.
#pragma once

#include <algorithm>
#include <utility>

#include "talvenor/print/PrintObject.h"

namespace PrintTag
{
struct Tag // constant, unlike an MAttributeTag
{
   UINT16 itsGroup;
   UINT16 itsElement;
   operator MAttributeTag() const { return {itsGroup, itsElement}; }
};

inline constexpr Tag kReferencedFilmBoxes{0x2000, 0x0500};
inline constexpr Tag kReferencedFilmSession{0x2010, 0x0500};
inline constexpr Tag kReferencedImageBoxes{0x2010, 0x0510};
inline constexpr Tag kReferencedAnnotationBoxes{0x2010, 0x0520};
inline constexpr Tag kReferencedOverlays{0x2020, 0x0130}; // image overlays and print overlays
inline constexpr Tag kReferencedVOILUTs{0x2020, 0x0140};
inline constexpr Tag kReferencedPresentationLUTs{0x2050, 0x0500};
inline constexpr Tag kReferencedPrintJobs{0x2100, 0x0500};
} // namespace PrintTag

struct PrintReference
{
   UID itsSOPClass;    // (0008,1150)
   UID itsSOPInstance; // (0008,1155)
};

// At most so many of one sequence are looked at: a film has no more boxes.
inline constexpr std::size_t kMostPrintReferences = 400;

// Items without an instance are left out, and when theSOPClass is not empty those of other classes.
std::vector<PrintReference> ReadReferences(const DICOMDataObject& theObject, const MAttributeTag& theTag,
                                           const UID& theSOPClass = UID());

// Removes the items that reference theInstance.
void RemoveReference(DICOMDataObject& theObject, const MAttributeTag& theTag, const UID& theInstance);
void RemoveReferences(DICOMDataObject& theObject, const MAttributeTag& theTag); // all
void AddReference(DICOMDataObject& theObject, const MAttributeTag& theTag, const UID& theSOPClass,
                  const UID& theInstance);

template <class Part>
Part* FindPart(const PrintParts<Part>& theParts, const UID& theInstance)
{
   const auto aPlace = std::find_if(theParts.begin(), theParts.end(),
                                    [&](const auto& thePart) { return thePart->GetSOPInstanceUID() == theInstance; });
   return aPlace != theParts.end() ? aPlace->get() : nullptr;
}

// One part for each reference, in that order: the one that is there, or a new one.
template <class Part>
void ResyncParts(PrintParts<Part>& theParts, const std::vector<PrintReference>& theReferences,
                 AbstractPrintManagementMeta& theMeta)
{
   PrintParts<Part> aNewOnes;
   for (const PrintReference& aReference : theReferences)
   {
      const auto aPlace = std::find_if(theParts.begin(), theParts.end(), [&](const auto& thePart) {
         return thePart != nullptr && thePart->GetSOPInstanceUID() == aReference.itsSOPInstance;
      });
      if (aPlace != theParts.end())
      {
         aNewOnes.push_back(std::move(*aPlace));
         theParts.erase(aPlace);
         continue;
      }
      aNewOnes.push_back(std::make_unique<Part>(theMeta));
      aNewOnes.back()->SetSOPClassUID(aReference.itsSOPClass);
      aNewOnes.back()->SetSOPInstanceUID(aReference.itsSOPInstance);
   }
   theParts = std::move(aNewOnes);
}

// The parts take the UIDs of the references in turn. False when there are too few.
template <class Part>
bool AssignReferences(const PrintParts<Part>& theParts, const std::vector<PrintReference>& theReferences)
{
   for (std::size_t i = 0; i < theParts.size() && i < theReferences.size(); ++i)
   {
      theParts[i]->SetSOPClassUID(theReferences[i].itsSOPClass);
      theParts[i]->SetSOPInstanceUID(theReferences[i].itsSOPInstance);
   }
   return theReferences.size() >= theParts.size();
}

// The instance UID that the film session of thePart issues for theSOPClass; it stays when there is none to be had.
void TakeNewInstanceUID(PrintObject& thePart, const UID& theSOPClass);
