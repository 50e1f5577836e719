#include "talvenor/ul/AAssociateRQPDU.h"

#include <utility>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/ul/AAssociateFieldList.h"
#include "talvenor/ul/ULPDUBodies.h"

namespace
{
constexpr char kDICOMApplicationContext[] = "1.2.840.10008.3.1.1.1"; // PS3.7 A.2.1
constexpr UINT32 kNoContext = 0xFFFFFFFF;
} // namespace

AAssociateRQPDU::AAssociateRQPDU() : AAssociateRQPDU(AETitle::GetDefaultAETitle(), RWCString()) {}

AAssociateRQPDU::AAssociateRQPDU(const RWCString& theCallingTitle, const RWCString& theCalledTitle)
{
   itsFields.itsCalledTitle.Set(theCalledTitle);
   itsFields.itsCallingTitle.Set(theCallingTitle);
   itsFields.itsApplicationContext.Set(kDICOMApplicationContext);
   itsPositions.fill(kNoContext);
}

bool AAssociateRQPDU::operator==(const AAssociateRQPDU& theOther) const
{
   return itsFields == theOther.itsFields && itsContexts == theOther.itsContexts;
}

const PresentationContextItem* AAssociateRQPDU::GetPresentationContextItem(unsigned char theID) const
{
   const UINT32 aPosition = theID % 2 != 0 ? itsPositions[theID / 2] : kNoContext;
   return aPosition < itsContexts.size() ? itsContexts[aPosition] : nullptr;
}

PresentationContextItem* AAssociateRQPDU::GetPresentationContextItem(unsigned char theID)
{
   return const_cast<PresentationContextItem*>(std::as_const(*this).GetPresentationContextItem(theID));
}

void AAssociateRQPDU::AddPresentationContext(PresentationContextItem* theContext)
{
   std::unique_ptr<PresentationContextItem> aContext(theContext);
   if (aContext == nullptr)
   {
      return;
   }
   if (itsContexts.size() >= kMostContexts)
   {
      throw TNRuntimeException("AAssociateRQPDU::AddPresentationContext attempt to add more than 128 presentation "
                               "contexts to request");
   }
   aContext->SetPresentationContextID(static_cast<unsigned char>(2 * itsContexts.size() + 1));
   Append(std::move(aContext));
}

void AAssociateRQPDU::AddPresentationContext(const PresentationContextItem& theContext)
{
   AddPresentationContext(new PresentationContextItem(theContext));
}

void AAssociateRQPDU::Append(std::unique_ptr<PresentationContextItem> theContext)
{
   const unsigned int aRow = theContext->PresentationContextID() / 2;
   itsContexts.push_back(std::move(theContext));
   itsPositions[aRow] = static_cast<UINT32>(itsContexts.size() - 1);
}

void AAssociateRQPDU::ClearPresentationContexts()
{
   itsContexts.clear();
   itsPositions.fill(kNoContext);
}

// As it is written; reading, which takes the items in any order, is below.
template <class Self, class Visitor>
int AAssociateRQPDU::Fields(Self& thePDU, Visitor& theVisitor)
{
   return AAssociateAllFields(thePDU.itsFields, thePDU.itsContexts, theVisitor);
}

int AAssociateRQPDU::Fields(AAssociateRQPDU& thePDU, FieldReader& theReader)
{
   using Owner = AAssociateRQPDU;
   static constexpr char kShort[] = "::ReadDynamic: EOF while reading body";
   static constexpr SubItemRow<Owner> kRows[] = {
       {0x10,
        [](Owner& o, PDUInputStream& s, unsigned int& n) {
           return o.itsFields.itsApplicationContext.ReadDynamic(s, n);
        },
        kShort},
       {0x20, [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.ReadContext(s, n); }, kShort},
       {0x50,
        [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsFields.itsUserInformation.ReadDynamic(s, n); },
        kShort},
   };
   constexpr SubItemTexts kTexts = {"::ReadDynamic: EOF while reading subitem type",
                                    "::ReadDynamic: unrecognized subitem type", true};

   // Nothing of an earlier request stays.
   thePDU.itsFields.itsApplicationContext.Set(kDICOMApplicationContext);
   thePDU.itsFields.itsUserInformation = UserInformationItem();
   thePDU.ClearPresentationContexts();
   return AAssociateFixedFields(thePDU.itsFields, theReader) && theReader.SubItemsByType(thePDU, kRows, kTexts);
}

int AAssociateRQPDU::ReadContext(PDUInputStream& theStream, unsigned int& theBytesRead)
{
   auto aContext = std::make_unique<PresentationContextItem>();
   if (!aContext->ReadDynamic(theStream, theBytesRead))
   {
      return 0;
   }
   if (aContext->PresentationContextID() % 2 == 0)
   {
      RaiseULFailure("AAssociateRQPDU::ReadDynamic: Invalid presentation context ID (not an odd number)",
                     TN_INVALID_ITEM);
   }
   Append(std::move(aContext));
   return 1;
}

int AAssociateRQPDU::Fields(const AAssociateRQPDU& thePDU, FieldDumper& theDumper)
{
   return DumpAAssociateFields(thePDU.itsFields, thePDU.itsPDULength, thePDU.itsContexts, theDumper);
}

template class ULPDU<AAssociateRQPDU>;
