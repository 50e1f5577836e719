// The mark of a part of a print session that is being printed, and is to be left as it is meanwhile. The library sets
// it while the host's print action runs; a host that prints in the background sets it in the action and clears it, from
// any thread, when it is done.
#pragma once

#include <atomic>

#include "talvenor/Export.h"

class TALVENOR_API BusyMark
{
public:
   bool IsBusy() const { return itsUsers.load() > 0; }

   // Counted: each SetBusy needs its ClearBusy.
   void SetBusy() { ++itsUsers; }
   void ClearBusy() { --itsUsers; }

protected:
   // Looks once a second, without limit.
   void WaitWhileBusy() const;

private:
   std::atomic<int> itsUsers{0};
};

// For the time of a scope.
class BusyWhileInScope
{
public:
   explicit BusyWhileInScope(BusyMark& theMark) : itsMark(theMark) { itsMark.SetBusy(); }
   ~BusyWhileInScope() { itsMark.ClearBusy(); }
   BusyWhileInScope(const BusyWhileInScope&) = delete;
   BusyWhileInScope& operator=(const BusyWhileInScope&) = delete;

private:
   BusyMark& itsMark;
};
