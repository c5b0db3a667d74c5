#include "vorlund/api/platform/WindowsLean.h"
#include "vorlund/system/ParkingLot.h"
#include "vorlund/system/Thread.h"

namespace vorlund {
namespace {

// Neither has a handle or anything to give back, and both exist since Windows Vista; a call that sleeps on a
// word exists only since Windows 8.
struct TMutex {
    // The names that std::lock_guard asks for.
    void lock() { AcquireSRWLockExclusive(&mutex); }
    void unlock() { ReleaseSRWLockExclusive(&mutex); }
    SRWLOCK mutex = SRWLOCK_INIT;
};

struct TCondition {
    void Wait(TMutex& held) { SleepConditionVariableSRW(&condition, &held.mutex, INFINITE, 0); }
    void Notify() { WakeConditionVariable(&condition); }
    CONDITION_VARIABLE condition = CONDITION_VARIABLE_INIT;
};

constinit CParkingLot<TMutex, TCondition> parkingLot;

} // namespace

unsigned int CurrentThreadId() noexcept {
    return GetCurrentThreadId();
}

bool IsThreadAlive(unsigned int thread) noexcept {
    const HANDLE handle = OpenThread(SYNCHRONIZE, FALSE, thread);
    // A thread that may not be looked at is there.
    if (!handle) return GetLastError() != ERROR_INVALID_PARAMETER;
    const bool isAlive = WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return isAlive;
}

void ParkWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    parkingLot.ParkWhile(word, value);
}

void UnparkOne(const void* address) noexcept {
    parkingLot.UnparkOne(address);
}

} // namespace vorlund
