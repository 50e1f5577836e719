// The meta SOP classes of print management (PS3.4 H.3): which kind of image boxes a film has. A host derives from one
// and implements the callbacks; see AbstractPrintManagementMeta.
#pragma once

#include "talvenor/print/AbstractPrintManagementMeta.h"

namespace PrintMetaSOPClass
{
inline constexpr char kBasicGrayscale[] = "1.2.840.10008.5.1.1.9";
inline constexpr char kBasicColor[] = "1.2.840.10008.5.1.1.18";
inline constexpr char kReferencedGrayscale[] = "1.2.840.10008.5.1.1.9.1";
inline constexpr char kReferencedColor[] = "1.2.840.10008.5.1.1.18.1";
} // namespace PrintMetaSOPClass

template <class ImageBox, const char* MetaSOPClass>
class PrintManagementMetaOf : public AbstractPrintManagementMeta
{
public:
   PrintManagementMetaOf() : AbstractPrintManagementMeta(MetaSOPClass) {}

   StandardBox* GetImageBox() override { return &itsImageBoxMessages; }
   VOILUTBox* GetLUTBox() override { return nullptr; }
   int ReadBox(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
               const PrintDecision& theDecision) override
   {
      return itsImageBoxMessages.Read(theService, theRequest, theTarget, theDecision);
   }
   int WriteBox(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theBox) override
   {
      return itsImageBoxMessages.Write(theService, theInstance, theBox, *this);
   }

private:
   ImageBox itsImageBoxMessages;
};

// Presentation LUTs are served here; in the other three the host decides.
class TALVENOR_API BasicGrayscalePrintManagementMeta
    : public PrintManagementMetaOf<BasicGrayscaleImageBox, PrintMetaSOPClass::kBasicGrayscale>
{
public:
   PresentationLUTBox* GetPresentationLUTBox() override { return &itsPresentationLUTBoxMessages; }
};

class TALVENOR_API BasicColorPrintManagementMeta
    : public PrintManagementMetaOf<BasicColorImageBox, PrintMetaSOPClass::kBasicColor>
{};

// An addition: the same with the image boxes of PS3.6, which printers and clients of other makers have.
class TALVENOR_API StandardColorPrintManagementMeta
    : public PrintManagementMetaOf<StandardColorImageBox, PrintMetaSOPClass::kBasicColor>
{};

class TALVENOR_API ReferencedGrayscalePrintManagementMeta
    : public PrintManagementMetaOf<ReferencedImageBox, PrintMetaSOPClass::kReferencedGrayscale>
{
public:
   VOILUTBox* GetLUTBox() override { return &itsLUTBoxMessages; }

private:
   VOILUTBox itsLUTBoxMessages;
};

class TALVENOR_API ReferencedColorPrintManagementMeta
    : public PrintManagementMetaOf<ReferencedImageBox, PrintMetaSOPClass::kReferencedColor>
{};
