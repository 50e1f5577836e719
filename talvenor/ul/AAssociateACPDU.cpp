#include "talvenor/ul/AAssociateACPDU.h"

#include "talvenor/ul/AAssociateFieldList.h"
#include "talvenor/ul/ULPDUBodies.h"

AAssociateACPDU::AAssociateACPDU(const RWCString& theCallingTitle, const RWCString& theCalledTitle)
{
   itsFields.itsCalledTitle.Set(theCalledTitle);
   itsFields.itsCallingTitle.Set(theCallingTitle);
}

// As it is written; reading, which takes the items in any order, is below.
template <class Self, class Visitor>
int AAssociateACPDU::Fields(Self& thePDU, Visitor& theVisitor)
{
   return AAssociateAllFields(thePDU.itsFields, thePDU.itsContexts, theVisitor);
}

int AAssociateACPDU::Fields(AAssociateACPDU& thePDU, FieldReader& theReader)
{
   using Owner = AAssociateACPDU;
   static constexpr SubItemRow<Owner> kRows[] = {
       {0x10,
        [](Owner& o, PDUInputStream& s, unsigned int& n) {
           return o.itsFields.itsApplicationContext.ReadDynamic(s, n);
        },
        "::ReadDynamic: EOF while reading ApplicationContextItem"},
       {0x21,
        [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsContexts.emplace_back().ReadDynamic(s, n); },
        "::ReadDynamic: EOF while reading PresentationContextAcceptItem"},
       {0x50,
        [](Owner& o, PDUInputStream& s, unsigned int& n) { return o.itsFields.itsUserInformation.ReadDynamic(s, n); },
        "::ReadDynamic: EOF while reading UserInformationItem"},
   };
   constexpr SubItemTexts kTexts = {"::ReadDynamic: EOF while reading item type",
                                    "::ReadDynamic: Unrecognized item type", false};

   // Nothing of an earlier acceptance stays.
   thePDU.itsFields = AAssociateFields();
   thePDU.ClearPresentationContextAccepts();
   return AAssociateFixedFields(thePDU.itsFields, theReader) && theReader.SubItemsByType(thePDU, kRows, kTexts);
}

int AAssociateACPDU::Fields(const AAssociateACPDU& thePDU, FieldDumper& theDumper)
{
   return DumpAAssociateFields(thePDU.itsFields, thePDU.itsPDULength, thePDU.itsContexts, theDumper);
}

template class ULPDU<AAssociateACPDU>;
