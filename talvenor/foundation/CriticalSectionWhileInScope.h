// Stays inside a critical section from construction to destruction.
#pragma once

#include "talvenor/foundation/CriticalSection.h"

class TALVENOR_API CriticalSectionWhileInScope
{
public:
   // theSection is borrowed and must outlive the guard.
   explicit CriticalSectionWhileInScope(CriticalSection& theSection) : itsSection(theSection) { itsSection.Enter(); }
   ~CriticalSectionWhileInScope() { itsSection.Leave(); }
   CriticalSectionWhileInScope(const CriticalSectionWhileInScope&) = delete;
   CriticalSectionWhileInScope& operator=(const CriticalSectionWhileInScope&) = delete;

private:
   CriticalSection& itsSection;
};
