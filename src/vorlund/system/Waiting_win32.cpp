#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/Waiting.h"

namespace vorlund::waiting {

static_assert(kTimeout == WAIT_TIMEOUT && kFailed == WAIT_FAILED);
static_assert(kForever == INFINITE && kMaxEvents == MAXIMUM_WAIT_OBJECTS);

namespace {

HANDLE HandleOf(TEventHandle event) {
    return reinterpret_cast<HANDLE>(event);
}

} // namespace

TEventHandle Create() noexcept {
    return reinterpret_cast<TEventHandle>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

TEventHandle Duplicate(TEventHandle event) noexcept {
    const HANDLE process = GetCurrentProcess();
    HANDLE duplicate = nullptr;
    if (event)
        DuplicateHandle(process, HandleOf(event), process, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return reinterpret_cast<TEventHandle>(duplicate);
}

void Close(TEventHandle event) noexcept {
    if (event) CloseHandle(HandleOf(event));
}

void Set(TEventHandle event) noexcept {
    SetEvent(HandleOf(event));
}

void Reset(TEventHandle event) noexcept {
    ResetEvent(HandleOf(event));
}

bool IsSet(TEventHandle event) noexcept {
    return WaitForSingleObject(HandleOf(event), 0) == WAIT_OBJECT_0;
}

std::uint32_t Wait(TEventHandle event, std::uint32_t milliseconds) noexcept {
    return WaitForSingleObject(HandleOf(event), milliseconds);
}

std::uint32_t WaitForSeveral(std::uint32_t count, const TEventHandle* events, bool isForAll,
                             std::uint32_t milliseconds) noexcept {
    const DWORD result =
        WaitForMultipleObjects(count, reinterpret_cast<const HANDLE*>(events), isForAll, milliseconds);
    return isForAll && result < count ? 0 : result;
}

} // namespace vorlund::waiting
