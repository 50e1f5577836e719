#include "talvenor/print/StandardAdvancedBox.h"

#include "talvenor/print/PrintOperations.h"

namespace
{
constexpr char kClass[] = "StandardAdvancedBox";
constexpr PrintOperation kCreate = NCreateOperation(kClass);
constexpr PrintOperation kSet = NSetOperation(kClass);
constexpr PrintOperation kDelete = NDeleteOperation(kClass);
} // namespace

StandardAdvancedBox::~StandardAdvancedBox() = default;

int StandardAdvancedBox::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardAdvancedBox::WriteCreate(PDU_Service& theService, UID& theInstance, DICOMDataObject& theDataset,
                                     AbstractPrintManagementMeta& theMeta) const
{
   return RunCreate(*this, kCreate, theService, theInstance, theDataset, theMeta);
}

int StandardAdvancedBox::WriteSet(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theDataset,
                                  AbstractPrintManagementMeta& theMeta) const
{
   return RunSet(*this, kSet, theService, theInstance, theDataset, theMeta);
}

int StandardAdvancedBox::WriteDelete(PDU_Service& theService, const UID& theInstance,
                                     AbstractPrintManagementMeta& theMeta) const
{
   return RunDelete(*this, kDelete, theService, theInstance, theMeta);
}

int StandardAdvancedBox::ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                    DICOMDataObject& theTarget) const
{
   return AnswerCreate(*this, theService, theRequest, theTarget, nullptr);
}

int StandardAdvancedBox::ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                    DICOMDataObject& theTarget, const PrintDecision& theDecision) const
{
   return AnswerCreate(*this, theService, theRequest, theTarget, theDecision);
}

int StandardAdvancedBox::ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                 DICOMDataObject& theTarget) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, nullptr);
}

int StandardAdvancedBox::ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                 DICOMDataObject& theTarget, const PrintDecision& theDecision) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, theDecision);
}

int StandardAdvancedBox::ReadDelete(PDU_Service& theService, const DICOMCommandObject& theRequest) const
{
   return AnswerDelete(*this, theService, theRequest);
}
