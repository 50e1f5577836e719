// The causes of failure and their texts.
//
// Every failure in the library is named by one TNResultCode. Operations that return a truth value leave the code on the
// object or in an out-parameter; exceptions of streams, decoders and PDU readers carry it (StreamIOException). A code
// travels with the operating system's error number, a plain int: always meaningful beside TN_SYSTEM_CALL_FAILED, 0
// where no system call was involved.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

// Hosts store and compare these values as integers: they are consecutive and must never be renumbered.
enum TNResultCode : int
{
   TN_NO_ERROR = 0,
   TN_SYSTEM_CALL_FAILED = 1,
   TN_END_OF_FILE = 2,
   TN_INVALID_FILE_HANDLE = 3,
   TN_NOT_CONNECTED = 4,
   TN_CONNECTION_REFUSED = 5,
   TN_INTERNAL_ERROR = 6,
   TN_INVALID_ARGUMENT = 7,
   TN_TIMED_OUT = 8,
   TN_LOCK_WAIT_TIMED_OUT = 9,
   TN_FLUSH_OVERRUN = 10,
   TN_OUT_OF_MEMORY = 11,
   TN_UNSUPPORTED = 12,
   TN_UNEXPECTED_PDU = 13,
   TN_UNEXPECTED_DATASET = 14,
   TN_INVALID_PDU = 15,
   TN_PEER_ABORTED = 16,
   TN_PEER_RELEASED = 17,
   TN_REQUEST_WAIT_TIMED_OUT = 18,
   TN_CLOSED_BY_US = 19,
   TN_CLOSED_BY_PEER = 20,
   TN_TRANSPORT_TIMED_OUT = 21,
   TN_PDU_TYPE_MISMATCH = 22,
   TN_ITEM_TYPE_MISMATCH = 23,
   TN_PDU_LENGTH_MISMATCH = 24,
   TN_MAX_LENGTH_TOO_SMALL = 25,
   TN_INVALID_ITEM = 26,
   TN_ITEM_LENGTH_MISMATCH = 27,
   TN_CALLING_AE_REJECTED = 28,
   TN_CALLED_AE_REJECTED = 29,
   TN_NO_CONTEXT_CHOSEN = 30,
   TN_CONTEXT_NOT_ACCEPTED = 31,
   TN_PDV_CONTEXT_MISMATCH = 32,
   TN_APPLICATION_CONTEXT_REJECTED = 33,
   TN_ALL_CONTEXTS_REJECTED = 34,
   TN_NO_ABSTRACT_SYNTAX = 35,
   TN_ASSOCIATION_REJECTED = 36,
   TN_PARSE_TO_OBJECT_FAILED = 37,
   TN_PARSE_FROM_OBJECT_FAILED = 38,
   TN_COMMAND_NOT_SUPPORTED = 39,
   TN_SOP_CLASS_MISMATCH = 40,
   TN_DATASET_MISSING = 41,
   TN_NO_SOP_CLASS_UID = 42,
   TN_NO_AFFECTED_SOP_CLASS = 43,
   TN_ELEMENT_NOT_FOUND = 44,
   TN_NO_STATUS = 45,
   TN_NO_SOP_INSTANCE_UID = 46,
   TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX = 47,
   TN_TRANSFER_SYNTAX_UNSUPPORTED = 48,
   TN_NO_CONTEXT_FOR_SYNTAXES = 49,
   TN_HOST_ADDRESS_NOT_FOUND = 50,
   TN_HOST_NAME_NOT_FOUND = 51,
   TN_DNS_ERROR = 52,
   TN_SOP_CLASS_UNSUPPORTED = 53,
   TN_CANCELLED = 54,
   TN_PDV_NOT_FINISHED = 55,
   TN_MESSAGE_NOT_FINISHED_PDV = 56,
   TN_PDU_NOT_FINISHED = 57,
   TN_MESSAGE_NOT_FINISHED = 58,
   TN_INVALID_ELEMENT_HEADER = 59,
   TN_INVALID_DELIMITER = 60,
   TN_INVALID_ENCODING = 61,
   TN_DECOMPRESSION_FAILED = 62,
   TN_DECODING_INTERRUPTED = 63,
   TN_LOCK_FAILED = 64,
   TN_UNLOCK_FAILED = 65,
   TN_OPEN_FAILED = 66,
   TN_FILE_IO_ERROR = 67,
   TN_CHECKSUM_MISMATCH = 68,
   TN_BYTEBUFFER_ERROR = 69,
   TN_ENCAPSULATED_WITH_NATIVE_SYNTAX = 70,
   TN_NATIVE_WITH_ENCAPSULATED_SYNTAX = 71,
   TN_ERROR_STATUS = 72
};

class TALVENOR_API TNResult
{
public:
   // The English text of a code; "Unknown result code." for a value that names none.
   static RWCString Describe(TNResultCode theCode);
};
