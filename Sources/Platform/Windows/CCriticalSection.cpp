// The system's critical section.
#include "CCriticalSection.h"

#include "WindowsApi.h"

#include <new>

namespace qel {

namespace {

CRITICAL_SECTION* sectionIn(std::byte* storage)
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

CCriticalSection::CCriticalSection()
{
    static_assert(sizeof(CRITICAL_SECTION) <= kSystemLockSize && alignof(CRITICAL_SECTION) <= alignof(void*));
    InitializeCriticalSectionAndSpinCount(new (storage_) CRITICAL_SECTION, kSpinCount);
}

CCriticalSection::~CCriticalSection()
{
    DeleteCriticalSection(sectionIn(storage_));
}

void CCriticalSection::lock()
{
    EnterCriticalSection(sectionIn(storage_));
}

bool CCriticalSection::tryLock()
{
    return TryEnterCriticalSection(sectionIn(storage_));
}

void CCriticalSection::unlock()
{
    LeaveCriticalSection(sectionIn(storage_));
}

} // namespace qel
