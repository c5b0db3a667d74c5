/// \file
/// `CObjectCounter`, the dispenser of object serial numbers.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

/// Hands out serial numbers, and raises where objects are created or destroyed while the library is closed.
/// Any number of threads may make objects at once; each gets a number of its own. `Init` and `Close` are for
/// one thread, while no other uses it.
///
/// The class identifiers are ignored: there is no count per class, no count of live objects and no report of
/// leaked ones. Programs that want them count in listeners (`IObject::AddListener`).
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
