// The elements of command sets by number (group 0000, PS3.7 E.1), and the values of one of them. Not part of the
// library's interface.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

namespace CommandElement
{
inline constexpr UINT16 AffectedSOPClassUID = 0x0002;
inline constexpr UINT16 RequestedSOPClassUID = 0x0003;
inline constexpr UINT16 CommandField = 0x0100;
inline constexpr UINT16 MessageID = 0x0110;
inline constexpr UINT16 MessageIDBeingRespondedTo = 0x0120;
inline constexpr UINT16 MoveDestination = 0x0600;
inline constexpr UINT16 Priority = 0x0700;
inline constexpr UINT16 DataSetType = 0x0800;
inline constexpr UINT16 Status = 0x0900;
inline constexpr UINT16 OffendingElement = 0x0901;
inline constexpr UINT16 ErrorComment = 0x0902;
inline constexpr UINT16 AffectedSOPInstanceUID = 0x1000;
inline constexpr UINT16 RequestedSOPInstanceUID = 0x1001;
inline constexpr UINT16 EventTypeID = 0x1002;
inline constexpr UINT16 AttributeIdentifierList = 0x1005;
inline constexpr UINT16 ActionTypeID = 0x1008;
inline constexpr UINT16 RemainingSuboperations = 0x1020;
inline constexpr UINT16 CompletedSuboperations = 0x1021;
inline constexpr UINT16 FailedSuboperations = 0x1022;
inline constexpr UINT16 WarningSuboperations = 0x1023;
inline constexpr UINT16 MoveOriginatorTitle = 0x1030;
inline constexpr UINT16 MoveOriginatorMessageID = 0x1031;
} // namespace CommandElement

// Written values. On reading, anything but kNoDataset means that a data set follows.
namespace DataSetType
{
inline constexpr UINT16 kNoDataset = 0x0101;
inline constexpr UINT16 kDataset = 0x0102;
} // namespace DataSetType
