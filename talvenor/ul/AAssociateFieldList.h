// The layout that A-ASSOCIATE-RQ and A-ASSOCIATE-AC share (PS3.8 9.3.2, 9.3.3). Internal.
#pragma once

#include "talvenor/ul/AAssociateFields.h"
#include "talvenor/ul/FieldDumper.h"

// What stands before the items: 68 bytes.
template <class Fields, class Visitor>
int AAssociateFixedFields(Fields& theFields, Visitor& theVisitor)
{
   return theVisitor.Number("itsProtocolVersion", theFields.itsProtocolVersion) &&
          theVisitor.Reserved("itsReserved2", 2) && theVisitor.Title("itsCalledAppTitle", theFields.itsCalledTitle) &&
          theVisitor.Title("itsCallingAppTitle", theFields.itsCallingTitle) && theVisitor.Reserved("itsReserved3", 32);
}

// A whole PDU, as it is written.
template <class Fields, class List, class Visitor>
int AAssociateAllFields(Fields& theFields, List& theContexts, Visitor& theVisitor)
{
   return AAssociateFixedFields(theFields, theVisitor) && theVisitor.SubItem(theFields.itsApplicationContext) &&
          theVisitor.Members(theContexts) && theVisitor.SubItem(theFields.itsUserInformation);
}

// In the order in which people read it: who calls whom.
template <class List>
int DumpAAssociateFields(const AAssociateFields& theFields, UINT32 theLength, const List& theContexts,
                         FieldDumper& theDumper)
{
   theDumper.Number("Length", theLength);
   theDumper.Number("Protocol Version", theFields.itsProtocolVersion);
   theDumper.Title("Calling AE Title", theFields.itsCallingTitle);
   theDumper.Title("Called AE Title", theFields.itsCalledTitle);
   theDumper.SubItem(theFields.itsApplicationContext);
   theDumper.Counted("Proposed Presentation Contexts", theContexts.size());
   theDumper.Members(theContexts);
   return theDumper.SubItem(theFields.itsUserInformation);
}
