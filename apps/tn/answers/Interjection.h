// What a peer says while it waits for the answers to its request: only that it wants no more of them (C-CANCEL, PS3.7
// 9.3.2.3 and 9.3.4.3).
#pragma once

class PDU_Service;

enum class Interjection
{
   kNone,
   kCancel,
   kOther // not understood, or the association is gone: it cannot go on
};

// Does not wait for one. The request's presentation context stays the current one.
Interjection ReadInterjection(PDU_Service& theService);
