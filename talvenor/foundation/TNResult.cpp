#include "talvenor/foundation/TNResult.h"

#include <cstddef>
#include <iterator>

namespace
{

struct ResultText
{
   TNResultCode itsCode;
   const char* itsText;
};

// Row n describes code n. The texts are compared by hosts and stay as they are, full stops and all.
constexpr ResultText kResultTexts[] = {
    {TN_NO_ERROR, "No error."},
    {TN_SYSTEM_CALL_FAILED, "Failed system call."},
    {TN_END_OF_FILE, "End of file."},
    {TN_INVALID_FILE_HANDLE, "Invalid file handle."},
    {TN_NOT_CONNECTED, "Transport not connected."},
    {TN_CONNECTION_REFUSED, "Host down, network down, or connection refused; try Again."},
    {TN_INTERNAL_ERROR, "Internal program error."},
    {TN_INVALID_ARGUMENT, "Invalid argument in function call."},
    {TN_TIMED_OUT, "Operation timed out."},
    {TN_LOCK_WAIT_TIMED_OUT, "Wait for locked file timed out."},
    {TN_FLUSH_OVERRUN, "Attempt to flush more bytes than buffered."},
    {TN_OUT_OF_MEMORY, "Memory allocation failed."},
    {TN_UNSUPPORTED, "Operation unsupported."},
    {TN_UNEXPECTED_PDU, "Unexpected PDU type received."},
    {TN_UNEXPECTED_DATASET, "DIMSE command includes dataset when none expected."},
    {TN_INVALID_PDU, "Invalid PDU received."},
    {TN_PEER_ABORTED, "Received AAbort request from peer."},
    {TN_PEER_RELEASED, "Received ARelease request from peer."},
    {TN_REQUEST_WAIT_TIMED_OUT, "Read timed out while awaiting start of DICOM request."},
    {TN_CLOSED_BY_US, "Transport connection closed by us."},
    {TN_CLOSED_BY_PEER, "Transport connection closed by peer or network."},
    {TN_TRANSPORT_TIMED_OUT, "Transport operation timed out."},
    {TN_PDU_TYPE_MISMATCH, "PDU type received doesn't match type of PDU being read."},
    {TN_ITEM_TYPE_MISMATCH, "Item type received doesn't match type of item being read."},
    {TN_PDU_LENGTH_MISMATCH, "Length specified in PDU doesn't match bytes received."},
    {TN_MAX_LENGTH_TOO_SMALL, "Max length specified in PDU > 0 and < 8."},
    {TN_INVALID_ITEM, "Invalid item contained in PDU."},
    {TN_ITEM_LENGTH_MISMATCH, "Length of item contained in PDU doesn't match bytes received."},
    {TN_CALLING_AE_REJECTED, "Calling application title rejected by us."},
    {TN_CALLED_AE_REJECTED, "Called application title rejected by us."},
    {TN_NO_CONTEXT_CHOSEN, "Program error - no presentation context has been chosen for use."},
    {TN_CONTEXT_NOT_ACCEPTED, "Specified presentation context not found in accepted contexts."},
    {TN_PDV_CONTEXT_MISMATCH, "Presentation context in PDV does not match the one currently in use."},
    {TN_APPLICATION_CONTEXT_REJECTED, "Application context rejected by us."},
    {TN_ALL_CONTEXTS_REJECTED, "All proposed presentation contexts were rejected."},
    {TN_NO_ABSTRACT_SYNTAX, "No abstract syntaxes were proposed."},
    {TN_ASSOCIATION_REJECTED, "Association rejected."},
    {TN_PARSE_TO_OBJECT_FAILED, "Unable to parse raw VR to DICOMObject."},
    {TN_PARSE_FROM_OBJECT_FAILED, "Unable to parse DICOMObject to raw VR."},
    {TN_COMMAND_NOT_SUPPORTED, "Received DIMSE command not supported."},
    {TN_SOP_CLASS_MISMATCH, "Object SOP class not equal to service SOP class."},
    {TN_DATASET_MISSING, "Command requires dataset (e.g. CStore) but none sent."},
    {TN_NO_SOP_CLASS_UID, "Object does not contain required SOP class UID attribute."},
    {TN_NO_AFFECTED_SOP_CLASS, "Command does not contain affected SOP class attribute."},
    {TN_ELEMENT_NOT_FOUND, "A required DICOM data element was not found."},
    {TN_NO_STATUS, "Response does not contain required DICOM status code."},
    {TN_NO_SOP_INSTANCE_UID, "Object does not contain required SOP instance UID attribute."},
    {TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX,
     "Association contains no presentation context supporting specified abstract syntax."},
    {TN_TRANSFER_SYNTAX_UNSUPPORTED, "Specified transfer syntax not supported."},
    {TN_NO_CONTEXT_FOR_SYNTAXES,
     "Association contains no presentation context supporting required abstract syntax and transfer syntax."},
    {TN_HOST_ADDRESS_NOT_FOUND, "Address not found while looking up by host name (DNS)"},
    {TN_HOST_NAME_NOT_FOUND, "Host name not found while looking up by address (DNS)"},
    {TN_DNS_ERROR, "Error while looking up host name or address (DNS)"},
    {TN_SOP_CLASS_UNSUPPORTED, "GetUID() returned FALSE indicating SOP Class not supported."},
    {TN_CANCELLED, "Operation-in-progress cancelled by user request."},
    {TN_PDV_NOT_FINISHED, "Previous PDV not fully read when attempting read new PDV"},
    {TN_MESSAGE_NOT_FINISHED_PDV, "Previous DICOM message not fully read when attempting read new PDV"},
    {TN_PDU_NOT_FINISHED, "Previous PDU not fully read when attempting read new PDU"},
    {TN_MESSAGE_NOT_FINISHED, "Previous DICOM message not fully read when attempting read new message"},
    {TN_INVALID_ELEMENT_HEADER, "Invalid data element header encountered"},
    {TN_INVALID_DELIMITER, "Invalid sequence item or sequence end delimiter"},
    {TN_INVALID_ENCODING, "Invalid data encoding (e.g. encapsulated pixels for non-lee syntax)"},
    {TN_DECOMPRESSION_FAILED, "Data decompression failed"},
    {TN_DECODING_INTERRUPTED, "Data decoding (decompression) interrupted"},
    {TN_LOCK_FAILED, "Unable to lock file"},
    {TN_UNLOCK_FAILED, "Error while unlocking file"},
    {TN_OPEN_FAILED, "I/O error while opening file"},
    {TN_FILE_IO_ERROR, "I/O error while reading/writing file"},
    {TN_CHECKSUM_MISMATCH, "Computed checksum did not match stored checksum"},
    {TN_BYTEBUFFER_ERROR, "Internal error in ByteBuffer"},
    {TN_ENCAPSULATED_WITH_NATIVE_SYNTAX, "Can't send encapsulated pixel data using non-encapsulated syntax"},
    {TN_NATIVE_WITH_ENCAPSULATED_SYNTAX, "Can't send non-encapsulated pixel data using encapsulated syntax"},
    {TN_ERROR_STATUS, "DICOM status in response indicates that an error occurred"},
};

constexpr bool EveryRowStandsAtItsCode()
{
   for (std::size_t i = 0; i < std::size(kResultTexts); ++i)
   {
      if (static_cast<std::size_t>(kResultTexts[i].itsCode) != i)
      {
         return false;
      }
   }
   return true;
}
static_assert(std::size(kResultTexts) == 73 && EveryRowStandsAtItsCode());

} // namespace

RWCString TNResult::Describe(TNResultCode theCode)
{
   const auto anIndex = static_cast<unsigned int>(theCode); // a negative code is far outside the table
   return anIndex < std::size(kResultTexts) ? kResultTexts[anIndex].itsText : "Unknown result code.";
}
