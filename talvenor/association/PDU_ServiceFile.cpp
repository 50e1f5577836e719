// Preparing received datasets for storage as files (PS3.10 7.1).
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
int PushText(DICOMObject& theObject, UINT16 theElement, UINT16 theType, const RWCString& theText)
{
   auto aVR = std::make_unique<VR>(0x0002, theElement);
   aVR->SetTypeCode(theType);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), theType == VRCode::UI ? '\0' : ' ');
   return theObject.Push(aVR.release());
}

int CopyUID(DICOMObject& theObject, UINT16 theFrom, UINT16 theTo, const char* theName)
{
   RWCString aUID;
   if (!theObject.GetString(0x0008, theFrom, aUID))
   {
      startentry(gTNErrorLog) << "PDU_Service::MakeChapter10(): Error: Missing " << theName << " attribute in dataset\n"
                              << endentry;
      return 0;
   }
   return PushText(theObject, theTo, VRCode::UI, aUID);
}
} // namespace

void TraceObject(const char* theText, const DICOMObject& theObject)
{
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      startentry(gTNTracer) << theText << "\n" << endentry;
      if (gTNTracer(TNTrace::TNTracePDUDicomObjects))
      {
         theObject.Dump(gTNTracer);
      }
   }
}

int PDU_Service::MakeChapter10(DICOMObject& theObject, const RWCString& theSourceAETitle, DICOMFileType theType,
                               const UID* theTransferSyntax)
{
   constexpr unsigned char kVersion[] = {0x00, 0x01};
   constexpr std::size_t kLongestVersionName = 16;

   theObject.RemoveGroup(0x0002);
   auto aVersion = std::make_unique<VR>(0x0002, 0x0001);
   aVersion->SetTypeCode(VRCode::OB);
   aVersion->SetData(kVersion, sizeof kVersion, '\0');
   if (!theObject.Push(aVersion.release()) || !CopyUID(theObject, 0x0016, 0x0002, "SOPClassUID") ||
       !CopyUID(theObject, 0x0018, 0x0003, "SOPInstanceUID"))
   {
      return 0;
   }
   RWCString aSyntax;
   switch (theType)
   {
   case LittleEndianImplicitFile: aSyntax = TransferSyntaxType::TSLEImplicitUID; break;
   case GivenOrLittleEndianExplicitFile:
      aSyntax = theTransferSyntax != nullptr ? theTransferSyntax->ToString() : TransferSyntaxType::TSLEExplicitUID;
      break;
   case BigEndianExplicitFile: aSyntax = TransferSyntaxType::TSBEExplicitUID; break;
   default:
      startentry(gTNErrorLog) << "PDU_Service::MakeChapter10(): Error: Invalid file type specifier argument\n"
                              << endentry;
      return 0;
   }
   const AETitle aTitle(theSourceAETitle.empty() ? AETitle::GetDefaultAETitle() : theSourceAETitle);
   return PushText(theObject, 0x0010, VRCode::UI, aSyntax) &&
          PushText(theObject, 0x0012, VRCode::UI, kImplementationClassUID) &&
          PushText(theObject, 0x0013, VRCode::SH,
                   RWCString(kImplementationVersionName).substr(0, kLongestVersionName)) &&
          PushText(theObject, 0x0016, VRCode::AE, static_cast<const char*>(aTitle));
}
