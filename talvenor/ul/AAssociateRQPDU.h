// A-ASSOCIATE-RQ (PS3.8 9.3.2): asks for an association, and proposes presentation contexts for it.
//
//    AAssociateRQPDU aRequest("WORKSTATION", "ARCHIVE");   // calling, called
//    PresentationContextItem aContext;
//    aContext.SetAbstractSyntax("1.2.840.10008.1.1");
//    aContext.AddTransferSyntax("1.2.840.10008.1.2");
//    aRequest.AddPresentationContext(aContext);            // gets ID 1
#pragma once

#include <array>

#include "talvenor/ul/AAssociateFields.h"
#include "talvenor/ul/OwnedList.h"
#include "talvenor/ul/PresentationContextItem.h"
#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AAssociateRQPDU : public ULPDU<AAssociateRQPDU>
{
public:
   static constexpr unsigned char itsPDUType = 1;

   // The called title is blank, the calling title the library's default; the application context is that of DICOM
   // (PS3.7 A.2.1).
   AAssociateRQPDU();
   AAssociateRQPDU(const RWCString& theCallingTitle, const RWCString& theCalledTitle);

   bool operator==(const AAssociateRQPDU& theOther) const;

   const AETitle& CalledAppTitle() const { return itsFields.itsCalledTitle; }
   const AETitle& CallingAppTitle() const { return itsFields.itsCallingTitle; }
   // Without padding.
   RWCString GetCalledAppTitle() const { return itsFields.itsCalledTitle.GetTitle(); }
   RWCString GetCallingAppTitle() const { return itsFields.itsCallingTitle.GetTitle(); }
   void SetCalledAppTitle(const RWCString& theTitle) { itsFields.itsCalledTitle.Set(theTitle); }
   void SetCallingAppTitle(const RWCString& theTitle) { itsFields.itsCallingTitle.Set(theTitle); }

   const ApplicationContextItem& GetApplicationContext() const { return itsFields.itsApplicationContext; }
   void SetApplicationContext(const ULUID& theName) { itsFields.itsApplicationContext.Set(theName); }
   void SetApplicationContext(const ApplicationContextItem& theItem) { itsFields.itsApplicationContext = theItem; }

   // In the order of the PDU. A received request may have more than 128, and IDs more than once.
   const OwnedList<PresentationContextItem>& PresentationContextList() const { return itsContexts; }
   unsigned int GetPresentationContextCount() const { return static_cast<unsigned int>(itsContexts.size()); }
   // The context with that ID, of several the last; null when there is none, and for an even ID.
   const PresentationContextItem* GetPresentationContextItem(unsigned char theID) const;
   PresentationContextItem* GetPresentationContextItem(unsigned char theID);

   // Appends the context, which gets the next odd ID: 1, 3, ... 255. The pointer form takes it over, also if it throws,
   // and it can be changed as long as it is listed. Throws TNRuntimeException when there are 128.
   void AddPresentationContext(PresentationContextItem* theContext);
   void AddPresentationContext(const PresentationContextItem& theContext);
   void ClearPresentationContexts();

   const UserInformationItem& GetUserInformationItem() const { return itsFields.itsUserInformation; }
   UserInformationItem& GetUserInformationItem() { return itsFields.itsUserInformation; }
   void SetUserInformationItem(const UserInformationItem& theItem) { itsFields.itsUserInformation = theItem; }

   // An addition: a set of bits, of which bit 0 stands for version 1 (PS3.8 table 9-11).
   UINT16 GetRequestedProtocolVersion() const { return itsFields.itsProtocolVersion; }

private:
   static constexpr unsigned int kMostContexts = 128; // as many as there are odd IDs

   friend class ULPDU<AAssociateRQPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);
   static int Fields(AAssociateRQPDU& thePDU, FieldReader& theReader);
   static int Fields(const AAssociateRQPDU& thePDU, FieldDumper& theDumper);
   int ReadContext(PDUInputStream& theStream, unsigned int& theBytesRead);
   void Append(std::unique_ptr<PresentationContextItem> theContext);

   AAssociateFields itsFields;
   OwnedList<PresentationContextItem> itsContexts;
   std::array<UINT32, kMostContexts> itsPositions; // in the list, of ID 2n + 1 at n; behind its end: no such context
};

extern template class ULPDU<AAssociateRQPDU>;
