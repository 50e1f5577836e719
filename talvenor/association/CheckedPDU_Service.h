// A PDU_Service that accepts what a text file lists. Each line of the file has three fields, separated by blanks or
// tabs:
//
//    # label    value                        keyword
//    scanner    CT_SCANNER_1                 RemoteAE
//    us         ARCHIVE                      LocalAE
//    CT         1.2.840.10008.5.1.4.1.1.2    sop
//    default    1.2.840.10008.1.2            transfer
//    DICOM      1.2.840.10008.3.1.1.1        Application
//
// RemoteAE lists calling AE titles, LocalAE called ones, sop (or abstract) abstract syntaxes, transfer transfer
// syntaxes and Application application context names, all compared exactly, titles without their padding. What has no
// line accepts everything: a service without a readable file accepts every peer. Keywords are read in any case; labels
// are for people, and so are lines that begin with "#". Lines with another keyword are ignored, with a line in the
// error log.
//
// A field has at most 63 characters and a line at most 254: what is longer is cut, with a line in the error log. A
// value that was cut is still listed, so that a mistake in the file narrows what is accepted rather than opening it to
// all.
#pragma once

#include <array>

#include "talvenor/association/PDU_Service.h"

class TALVENOR_API CheckedPDU_Service : public PDU_Service
{
public:
   // Reads the file, with InitializeFrom; null: accepts everything. theFactory is borrowed.
   CheckedPDU_Service(DULStreamFactory& theFactory, const char* thePath);
   CheckedPDU_Service(const CheckedPDU_Service& theOther) = default;
   ~CheckedPDU_Service() override;

   int CanYouHandleTransferSyntax(const TransferSyntaxItem& theSyntax) override;
   int ShouldIAcceptRemoteAppTitle(const RWCString& theTitle) override;
   int ShouldIAcceptLocalAppTitle(const RWCString& theTitle) override;
   int ShouldIAcceptApplicationContext(const ApplicationContextItem& theContext) override;
   int ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                   unsigned char& theSCURole) override;

   // Replaces the lists. Returns 0, with a line in the error log, when the path is null or the file cannot be read: the
   // lists then hold what was read, as a rule nothing.
   int InitializeFrom(const char* thePath);

   // Empties the lists: everything is accepted.
   void ReleaseMemory();

private:
   enum Kind
   {
      SOPClasses,
      TransferSyntaxes,
      ApplicationContexts,
      RemoteAETitles,
      LocalAETitles,
      KindCount
   };
   struct Keyword
   {
      const char* itsText;
      Kind itsKind;
   };
   struct Entry
   {
      RWCString itsLabel;
      RWCString itsValue;
   };

   static const Keyword kKeywords[];

   void ReadLine(const RWCString& theLine, const RWCString& theWhere);

   template <class Predicate>
   int Accepts(Kind theKind, Predicate theMatch) const;

   std::array<RWTValOrderedVector<Entry>, KindCount> itsLists;
};
