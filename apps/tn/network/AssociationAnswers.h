// What the peer's answers to the request of an association mean (PS3.8 9.3), in words, and what would help.
#pragma once

#include <string>

class AAbortRQPDU;
class AAssociateRJPDU;
class PDU_Service;
class UID;

// A line for the answer, and one for what was offered and what would have worked.
std::string ExplainRejection(const PDU_Service& theService);

// A line for each context that was offered: with what, and how it was answered.
std::string ExplainContexts(const PDU_Service& theService);

// How the peer answered the contexts for theSOPClass, on one line; those that offer theTransferSyntax only, unless it
// is empty.
std::string ExplainClass(const PDU_Service& theService, const std::string& theSOPClass,
                         const std::string& theTransferSyntax);

std::string ExplainAbort(const AAbortRQPDU& theAbort);

// "Verification SOP Class (1.2.840.10008.1.1)" when the dictionaries are loaded and have it, else the UID alone.
std::string NameOfUID(const std::string& theUID);
