#include "talvenor/dimse/CommandSetBuilder.h"

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/dimse/CommandElement.h"
#include "talvenor/dimse/DIMSEMessage.h"
#include "talvenor/dimse/MessageID.h"
#include "talvenor/foundation/AETitle.h"

namespace
{
constexpr UINT16 kMediumPriority = 0;
constexpr bool kNoTypingCheck = false;
} // namespace

CommandSetBuilder::CommandSetBuilder(DICOMCommandObject& theCommand)
    : itsCommand(theCommand), itsFactory(TNEndian::LittleEndian, kNoTypingCheck)
{
   itsCommand.Reset();
   itsCommand.SetEndian(TNEndian::LittleEndian);
}

UINT16 CommandSetBuilder::PushRequest(const DIMSEMessage& theMessage, const UID& theSOPClass)
{
   return PushRequest(theMessage.itsField, CommandElement::AffectedSOPClassUID, theSOPClass,
                      theMessage.itsHasDataset ? DataSetType::kDataset : DataSetType::kNoDataset,
                      theMessage.itsHasDataset);
}

UINT16 CommandSetBuilder::PushRequest(UINT16 theField, UINT16 theSOPClassElement, const UID& theSOPClass,
                                      UINT16 theDataSetType, bool theHasPriority)
{
   const UINT16 aMessageID = NextMessageID();
   PushUI(theSOPClassElement, theSOPClass);
   PushUS(CommandElement::CommandField, theField);
   PushUS(CommandElement::MessageID, aMessageID);
   if (theHasPriority)
   {
      PushUS(CommandElement::Priority, kMediumPriority);
   }
   PushUS(CommandElement::DataSetType, theDataSetType);
   return aMessageID;
}

void CommandSetBuilder::PushResponse(UINT16 theField, const UID& theSOPClass, const DICOMCommandObject& theRequest,
                                     UINT16 theDataSetType, UINT16 theStatus)
{
   PushUI(CommandElement::AffectedSOPClassUID, theSOPClass);
   PushUS(CommandElement::CommandField, theField);
   PushUS(CommandElement::MessageIDBeingRespondedTo, theRequest.GetUINT16(0, CommandElement::MessageID));
   PushUS(CommandElement::DataSetType, theDataSetType);
   PushUS(CommandElement::Status, theStatus);
}

void CommandSetBuilder::PushExplanation(const RWCString& theErrorComment,
                                        const RWTValOrderedVector<MAttributeTag>& theOffending)
{
   if (!theErrorComment.empty())
   {
      PushLO(CommandElement::ErrorComment, theErrorComment);
   }
   if (!theOffending.empty())
   {
      PushAT(CommandElement::OffendingElement, theOffending);
   }
}

void CommandSetBuilder::PushAE(UINT16 theElement, const AETitle& theTitle)
{
   Push(VRCode::AE, itsFactory.InternalGetVR(0, theElement, theTitle.GetTitle(), ' '));
}

void CommandSetBuilder::PushAT(UINT16 theElement, RWTValOrderedVector<MAttributeTag> theTags)
{
   Push(VRCode::AT, itsFactory.InternalGetVR(0, theElement, theTags));
}

void CommandSetBuilder::PushLO(UINT16 theElement, const RWCString& theText)
{
   Push(VRCode::LO, itsFactory.InternalGetVR(0, theElement, theText, ' '));
}

void CommandSetBuilder::PushUI(UINT16 theElement, const UID& theUID)
{
   Push(VRCode::UI, itsFactory.InternalGetVR(0, theElement, theUID));
}

void CommandSetBuilder::PushUS(UINT16 theElement, UINT16 theValue)
{
   Push(VRCode::US, itsFactory.InternalGetVR(0, theElement, theValue));
}

void CommandSetBuilder::Push(UINT16 theType, VR* theVR)
{
   theVR->SetTypeCode(theType);
   itsCommand.Push(theVR);
}
