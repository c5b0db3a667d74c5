/// \file
/// `CObjectCounter`, the dispenser of object serial numbers.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

/// Hands out serial numbers and guards that objects live only while the library is initialised. Not locked.
///
/// The class identifiers are ignored on purpose: there is no count per class, no count of live objects and no
/// report of leaked ones.
class VRL_API CObjectCounter {
public:
    /// Closed.
    CObjectCounter() = default;
    CObjectCounter(const CObjectCounter&) = delete;
    CObjectCounter& operator=(const CObjectCounter&) = delete;

    /// Raises `CBugException` "Not closed" while open.
    ~CObjectCounter() noexcept(false);

    /// Opens the counter at 1, whatever it was before.
    void Init();

    /// Closes the counter; nothing happens when it is closed.
    void Close();

    /// The next serial number. Raises `CBugException` "Not initialized" while closed.
    int OnCreateObject(const CId& classId);

    /// Checks only that the counter is open. Raises `CBugException` "Not initialized" while closed.
    void OnDestroyObject(const CId& classId);

private:
    int* next_ = nullptr;
};

} // namespace vorlund
