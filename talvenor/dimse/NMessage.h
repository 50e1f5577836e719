// The DIMSE-N messages (PS3.7 10): what a service is, a row each, and what the twelve classes have in common: sending,
// recognising, reading and tracing. Not part of the library's interface.
#pragma once

#include "talvenor/dimse/DIMSEMessage.h"

// One direction of a service. The class of the messages is named <service>RQ or <service>RSP.
struct NDirection
{
   const char* itsSuffix;         // of the name of the class
   const char* itsText;           // what a trace calls the message, behind the name of the service,
   const char* itsDatasetWritten; // and its data set; null where it never has one
   const char* itsDatasetRead;
   UINT16 itsField; // Command Field (0000,0100), PS3.7 E.1
};

struct NService
{
   const char* itsName;
   UINT16 itsSOPClass;          // elements of the request: the SOP class,
   UINT16 itsInstance;          // its instance,
   UINT16 itsTypeID;            // and of both messages, the type of event or action; 0 for none
   bool itsRequestSharesItsPDU; // with the data set that follows it
   NDirection itsRequest;
   NDirection itsResponse;
};

// PS3.7 10.3: notifications and creations speak of the affected instance, everything else of the requested one.
inline constexpr NService kNEventReport = {
    "NEventReport",
    CommandElement::AffectedSOPClassUID,
    CommandElement::AffectedSOPInstanceUID,
    CommandElement::EventTypeID,
    true,
    {"RQ", " Request ", "Event Information DataSet Written: ", "Request Data Read: ", 0x0100},
    {"RSP", " Response ", "Event Reply DataSet Written: ", "Event Reply DataSet Read: ", 0x8100}};
inline constexpr NService kNGet = {
    "NGet",
    CommandElement::RequestedSOPClassUID,
    CommandElement::RequestedSOPInstanceUID,
    0,
    true,
    {"RQ", " Request ", nullptr, nullptr, 0x0110},
    {"RSP", " Response ", "Event Reply DataSet Written: ", "Event Reply DataSet Read: ", 0x8110}};
inline constexpr NService kNSet = {
    "NSet",
    CommandElement::RequestedSOPClassUID,
    CommandElement::RequestedSOPInstanceUID,
    0,
    false,
    {"RQ", " Request ", "Modification List DataSet Written: ", "Modification List DataSet Read: ", 0x0120},
    {"RSP", " Response ", "Event Reply DataSet Written: ", "Attribute DataSet Read: ", 0x8120}};
inline constexpr NService kNAction = {
    "NAction",
    CommandElement::RequestedSOPClassUID,
    CommandElement::RequestedSOPInstanceUID,
    CommandElement::ActionTypeID,
    true,
    {"RQ", " Request ", "Action Information DataSet Written: ", "Modification List DataSet Read: ", 0x0130},
    {"RSP", " Response ", "Event Reply DataSet Written: ", "Attribute DataSet Read: ", 0x8130}};
inline constexpr NService kNCreate = {
    "NCreate",
    CommandElement::AffectedSOPClassUID,
    CommandElement::AffectedSOPInstanceUID,
    0,
    true,
    {"RQ", " Request ", "Attribute List DataSet Written: ", "Modification List DataSet Read: ", 0x0140},
    {"RSP", " Response ", "Event Reply DataSet Written: ", "Attribute DataSet Read: ", 0x8140}};
inline constexpr NService kNDelete = {
    "NDelete", CommandElement::RequestedSOPClassUID,          CommandElement::RequestedSOPInstanceUID,        0,
    true,      {"RQ", " Request ", nullptr, nullptr, 0x0150}, {"RSP", " Response ", nullptr, nullptr, 0x8150}};

// The method that a trace names.
inline constexpr char kNWrite[] = "::Write(): ";
inline constexpr char kNWriteCommand[] = "::WriteCommand(): ";

struct NRequest
{
   const UID& itsInstance;
   UINT16 itsDataSetType = DataSetType::kNoDataset;
   UINT16 itsTypeID = 0;
   const RWTValOrderedVector<MAttributeTag>* itsAttributes = nullptr; // of N-GET; borrowed
   const char* itsMethod = kNWrite;
};

struct NResponse
{
   const DICOMCommandObject& itsRequest;
   const UID& itsInstance;
   UINT16 itsStatus;
   const RWCString& itsComment;
   const RWTValOrderedVector<MAttributeTag>& itsOffending;
   UINT16 itsDataSetType = DataSetType::kNoDataset;
   UINT16 itsTypeID = 0;
   const char* itsMethod = kNWriteCommand;
};

// Send one message without its data set, or that data set.
int SendNRequest(const NService& theKind, PDU_Service& theService, const UID& theSOPClass, const NRequest& theRequest);
int SendNRequestDataset(const NService& theKind, PDU_Service& theService, const UID& theSOPClass,
                        DICOMDataObject& theDataset);
// theSOPClass, that of the service, becomes the one that the response names.
int SendNResponse(const NService& theKind, PDU_Service& theService, UID& theSOPClass, const NResponse& theResponse);
int SendNResponseDataset(const NService& theKind, PDU_Service& theService, DICOMDataObject& theDataset);

// Whether theCommand is the request or the response of theKind: the first sets no result code, so that several kinds
// can be tried in turn.
bool RecogniseNRequest(const NService& theKind, const DICOMCommandObject& theCommand);
bool RequireNResponse(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService);

// Replace the contents of theDataset by what follows theCommand. Without a data set, theWithout is the result and
// theDataset stays as it is.
int ReadNRequest(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService,
                 DICOMDataObject& theDataset, int theWithout);
int ReadNResponse(const NService& theKind, const DICOMCommandObject& theCommand, PDU_Service& theService,
                  DICOMDataObject& theDataset);

// TN_UNEXPECTED_DATASET when theCommand announces one: N-DELETE.
int RefuseDataset(const DICOMCommandObject& theCommand, PDU_Service& theService);

// What a class writes: the SOP class comes from its GetUID.
template <class MessageClass>
int WriteNRequest(const MessageClass& theClass, const NService& theKind, PDU_Service& theService,
                  const NRequest& theRequest, UID& theSOPClass)
{
   return FindSOPClass(theClass, theService, theSOPClass) && SendNRequest(theKind, theService, theSOPClass, theRequest);
}

template <class MessageClass>
int WriteNResponse(const MessageClass& theClass, const NService& theKind, PDU_Service& theService,
                   const NResponse& theResponse, UID& theSOPClass)
{
   return FindSOPClass(theClass, theService, theSOPClass) &&
          SendNResponse(theKind, theService, theSOPClass, theResponse);
}
