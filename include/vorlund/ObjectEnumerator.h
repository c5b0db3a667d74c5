/// \file
/// Enumerators: how the library hands out what it holds. One thread at a time; a filled enumerator may be
/// handed to another thread.
#pragma once

#include <vorlund/Object.h>

namespace vorlund {

/// A sequence that is read once, from the front.
class IObjectEnumerator : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x8C793E9B, 0xBC8745E2, 0x849BEBD0, 0x8EB98E6D};

    /// True while objects remain. Freezes a push enumerator.
    virtual bool HasNext() = 0;

    /// The next object, with one reference for the caller, or null when none remains.
    virtual IObject* GetNext() = 0;

protected:
    ~IObjectEnumerator() = default;
};

/// An enumerator that is filled first and then frozen by the first `HasNext` or `GetNext`.
class IPushObjectEnumerator : public IObjectEnumerator {
public:
    using TBase = IObjectEnumerator;
    static constexpr CId InterfaceId{0x1894F586, 0x380E4502, 0xBDDD06EC, 0xDD4E382C};

    /// Appends `object`, which must not be null, and adds a reference. Ignored once reading has begun. Raises
    /// `std::bad_alloc`, with nothing added.
    virtual void Push(IObject* object) = 0;

    /// Reserves room for `count` objects, before the first one is pushed; ignored otherwise.
    virtual void Reserve(unsigned int count) = 0;

protected:
    ~IPushObjectEnumerator() = default;
};

} // namespace vorlund
