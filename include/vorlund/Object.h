/// \file
/// `IObject`, the root of every interface of the library, and `IObjectListener`.
///
/// An interface adds operations after those of its base, in a single chain. It names its base (`TBase`) and
/// its identifier (`InterfaceId`); a query walks that chain, most derived first.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/Platform.h>

namespace vorlund {

class IObjectListener;

/// A reference-counted object with a class identifier, a serial number and listeners.
///
/// Counts and listeners are plain data: an object is used by one thread at a time. There is no destructor
/// slot; objects are destroyed only through `Release`.
class IObject {
public:
    using TBase = void;
    static constexpr CId InterfaceId{0x021E95ED, 0x173F45B5, 0xA6C3EC3F, 0xB12B6A49};

    /// Adds a reference; returns the new count.
    virtual int AddRef() = 0;

    /// Takes a reference back; returns the new count. At 0 the object is destroyed: it first tells its
    /// listeners, then the object counter, which raises `CBugException` "Not initialized" when the library is
    /// closed.
    virtual int Release() = 0;

    /// The object as another interface, with one reference added for the caller, or null when it has none of
    /// that identifier (the count is then unchanged). The result may be cast to the interface asked for.
    virtual IObject* QueryInterface(const CId& interfaceId) = 0;

    /// Adds a listener, which is told when the object dies. Neither owned nor referenced; one that is added
    /// twice is told twice.
    virtual void AddListener(IObjectListener* listener) = 0;

    /// Removes every occurrence of a listener; one that is not there is no error.
    virtual void RemoveListener(IObjectListener* listener) = 0;

    /// The serial number: 1 for the first object created after `v.Init()`, and so on across all classes.
    virtual int GetObjectNumber() = 0;

    /// The class identifier, the one under which the class is registered.
    virtual CId GetClassId() = 0;

protected:
    ~IObject() = default;
};

/// Hears when objects die.
class IObjectListener : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x2B84F858, 0x35FB4394, 0xB429968B, 0x2708B7F9};

    /// Called once per `AddListener` as the first step of the destruction of `object`, which is still whole.
    /// The callback may query and release it, and may change its listeners: one that is removed is not told
    /// any more, one that is added is not told either.
    virtual void OnObjectDestroyed(IObject* object) = 0;

protected:
    ~IObjectListener() = default;
};

} // namespace vorlund
