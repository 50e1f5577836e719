// A-ASSOCIATE-AC (PS3.8 9.3.3): accepts an association, and answers each presentation context that was proposed.
#pragma once

#include "talvenor/ul/AAssociateFields.h"
#include "talvenor/ul/PresentationContextAcceptItem.h"
#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AAssociateACPDU : public ULPDU<AAssociateACPDU>
{
public:
   static constexpr unsigned char itsPDUType = 2;

   // Both titles are blank, the application context is empty.
   AAssociateACPDU() = default;
   AAssociateACPDU(const RWCString& theCallingTitle, const RWCString& theCalledTitle);

   bool operator==(const AAssociateACPDU& theOther) const = default;

   const AETitle& GetCalledAETitle() const { return itsFields.itsCalledTitle; }
   const AETitle& GetCallingAETitle() const { return itsFields.itsCallingTitle; }
   void SetCalledAppTitle(const RWCString& theTitle) { itsFields.itsCalledTitle.Set(theTitle); }
   void SetCallingAppTitle(const RWCString& theTitle) { itsFields.itsCallingTitle.Set(theTitle); }

   UINT16 GetProtocolVersion() const { return itsFields.itsProtocolVersion; }

   const ApplicationContextItem& GetApplicationContext() const { return itsFields.itsApplicationContext; }
   void SetApplicationContext(const ApplicationContextItem& theItem) { itsFields.itsApplicationContext = theItem; }

   // The answers, accepted or not, in the order of the PDU. Nothing is tested: a peer may send any IDs, also twice.
   const RWTValOrderedVector<PresentationContextAcceptItem>& GetAcceptedContextList() const { return itsContexts; }
   void AddPresentationContextAccept(const PresentationContextAcceptItem& theItem) { itsContexts.push_back(theItem); }
   // An addition.
   void ClearPresentationContextAccepts() { itsContexts.clear(); }

   const UserInformationItem& GetUserInformationItem() const { return itsFields.itsUserInformation; }
   UserInformationItem& GetUserInformationItem() { return itsFields.itsUserInformation; }
   void SetUserInformationItem(const UserInformationItem& theItem) { itsFields.itsUserInformation = theItem; }

private:
   friend class ULPDU<AAssociateACPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);
   static int Fields(AAssociateACPDU& thePDU, FieldReader& theReader);
   static int Fields(const AAssociateACPDU& thePDU, FieldDumper& theDumper);

   AAssociateFields itsFields;
   RWTValOrderedVector<PresentationContextAcceptItem> itsContexts;
};

extern template class ULPDU<AAssociateACPDU>;
