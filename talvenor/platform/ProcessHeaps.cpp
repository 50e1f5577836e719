#include "talvenor/platform/ProcessHeaps.h"

#include <atomic>
#include <cerrno>
#include <system_error>

namespace TNPlatform
{

namespace
{
struct NoHeaps final : ProcessHeaps
{};

constinit NoHeaps gNoHeaps;
constinit std::atomic<ProcessHeaps*> gHeaps = &gNoHeaps;

bool Unsupported()
{
   errno = ENOSYS;
   return false;
}
} // namespace

std::size_t ProcessHeaps::List(void**, std::size_t)
{
   return 0;
}

bool ProcessHeaps::Lock(void*)
{
   return Unsupported();
}

bool ProcessHeaps::Unlock(void*)
{
   return Unsupported();
}

bool ProcessHeaps::Walk(void*, _PROCESS_HEAP_ENTRY&)
{
   return Unsupported();
}

bool ProcessHeaps::Validate(void*)
{
   return Unsupported();
}

bool ProcessHeaps::SetPolicy(void*, unsigned long)
{
   return Unsupported();
}

unsigned long ProcessHeaps::LastError()
{
   return static_cast<unsigned long>(errno);
}

std::string ProcessHeaps::ErrorText(unsigned long theError)
{
   return std::generic_category().message(static_cast<int>(theError));
}

ProcessHeaps& ProcessHeaps::Get()
{
   return *gHeaps.load(std::memory_order_acquire);
}

ProcessHeaps* ProcessHeaps::Replace(ProcessHeaps* theHeaps)
{
   return gHeaps.exchange(theHeaps != nullptr ? theHeaps : &gNoHeaps, std::memory_order_acq_rel);
}

} // namespace TNPlatform
