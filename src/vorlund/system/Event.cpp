#include "vorlund/system/AsyncWaits.h"
#include "vorlund/system/EventCell.h"
#include "vorlund/system/WaitTime.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstdarg>

namespace vorlund {
namespace {

// Kept for callers who compare it: the name of one system's file on every system.
constexpr const wchar* kFile = VRL_L("src/vorlund/system/EventWin32");
constexpr const wchar* kTimeout = VRL_L("Timeout");
constexpr TFailure kWaitTimeout{VRL_L("vorlund::CEvent::Wait"), kFile, 196, kTimeout};
constexpr TFailure kWaitAllTimeout{VRL_L("vorlund::CEvent::WaitAll"), kFile, 248, kTimeout};
constexpr TFailure kWaitOneTimeout{VRL_L("vorlund::CEvent::WaitOne"), kFile, 290, kTimeout};
constexpr TFailure kStaticWaitTimeout{VRL_L("vorlund::CEvent::Wait"), kFile, 325, kTimeout};

/// The events of an argument list, but no more than a wait looks at.
void ReadList(CEvent** events, int count, std::va_list arguments) {
    for (int index = 0; index < std::min(count, kMaxListed); ++index)
        events[index] = va_arg(arguments, CEvent*);
}

std::uint32_t WaitForList(bool isForAll, std::uint32_t milliseconds, int count, std::va_list arguments) {
    waiting::TEventHandle handles[waiting::kMaxEvents];
    // A longer list is not waited for, so nothing is read of it.
    if (count <= static_cast<int>(waiting::kMaxEvents)) {
        for (int index = 0; index < count; ++index)
            handles[index] = TEventAccess::HandleOf(va_arg(arguments, CEvent*));
    }
    return waiting::WaitForSeveral(static_cast<std::uint32_t>(count), handles, isForAll, milliseconds);
}

} // namespace

CEvent::CEvent() : cell_(new TCell(waiting::Create())) {}

CEvent::CEvent(const CEvent& other) : cell_(new TCell(waiting::Duplicate(other.cell_->Get()))) {}

CEvent& CEvent::operator=(const CEvent& other) {
    if (this == &other) return *this;
    waiting::Close(cell_->Get());
    cell_->handle.store(waiting::Duplicate(other.cell_->Get()), std::memory_order_release);
    return *this;
}

CEvent::~CEvent() {
    asyncWaits.Stop(this);
    waiting::Close(cell_->Get());
    delete cell_;
}

void CEvent::SetState(bool state) {
    if (state)
        waiting::Set(cell_->Get());
    else
        waiting::Reset(cell_->Get());
}

bool CEvent::GetState() {
    return waiting::IsSet(cell_->Get());
}

void CEvent::Wait() {
    waiting::Wait(cell_->Get(), waiting::kForever);
}

void CEvent::Wait(float seconds) {
    if (waiting::Wait(cell_->Get(), MillisecondsOf(seconds)) == waiting::kTimeout)
        Raise<CTimeoutException>(kWaitTimeout);
}

void CEvent::Wait(CEvent& event) {
    event.Wait();
}

void CEvent::Wait(float seconds, CEvent& event) {
    if (waiting::Wait(event.cell_->Get(), MillisecondsOf(seconds)) == waiting::kTimeout)
        Raise<CTimeoutException>(kStaticWaitTimeout);
}

unsigned int CEvent::WaitOne(int count, ...) {
    std::va_list arguments;
    va_start(arguments, count);
    const std::uint32_t result = WaitForList(false, waiting::kForever, count, arguments);
    va_end(arguments);
    return result;
}

unsigned int CEvent::WaitOne(float seconds, int count, ...) {
    std::va_list arguments;
    va_start(arguments, count);
    const std::uint32_t result = WaitForList(false, MillisecondsOf(seconds), count, arguments);
    va_end(arguments);
    if (result == waiting::kTimeout) Raise<CTimeoutException>(kWaitOneTimeout);
    return result;
}

void CEvent::WaitAll(int count, ...) {
    std::va_list arguments;
    va_start(arguments, count);
    WaitForList(true, waiting::kForever, count, arguments);
    va_end(arguments);
}

void CEvent::WaitAll(float seconds, int count, ...) {
    std::va_list arguments;
    va_start(arguments, count);
    const std::uint32_t result = WaitForList(true, MillisecondsOf(seconds), count, arguments);
    va_end(arguments);
    if (result == waiting::kTimeout) Raise<CTimeoutException>(kWaitAllTimeout);
}

unsigned int CEvent::WaitAsync(void (*cb)(TAsyncCbData&), void* data) {
    CEvent* const event = this;
    return asyncWaits.Start({cb, data, true, 1, &event});
}

unsigned int CEvent::WaitAsync(void (*cb)(TAsyncCbData&), void* data, CEvent& event) {
    return event.WaitAsync(cb, data);
}

unsigned int CEvent::WaitOneAsync(void (*cb)(TAsyncCbData&), void* data, int count, ...) {
    CEvent* events[kMaxListed];
    std::va_list arguments;
    va_start(arguments, count);
    ReadList(events, count, arguments);
    va_end(arguments);
    return asyncWaits.Start({cb, data, false, count, events});
}

unsigned int CEvent::WaitAllAsync(void (*cb)(TAsyncCbData&), void* data, int count, ...) {
    CEvent* events[kMaxListed];
    std::va_list arguments;
    va_start(arguments, count);
    ReadList(events, count, arguments);
    va_end(arguments);
    return asyncWaits.Start({cb, data, true, count, events});
}

void CEvent::StopAsync(unsigned int handle) {
    asyncWaits.Stop(handle);
}

void CEvent::StopAsync(void (*cb)(TAsyncCbData&)) {
    asyncWaits.Stop(cb);
}

} // namespace vorlund
