/// \file
/// Lists, enumerators and wrappers: how the library hands out collections of objects. Each object is used by
/// one thread at a time; a filled enumerator may be handed to another thread.
#pragma once

#include <vorlund/Object.h>
#include <vorlund/String.h>

namespace vorlund {

/// A sequence that is read once, from the front.
class IObjectEnumerator : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x8C793E9B, 0xBC8745E2, 0x849BEBD0, 0x8EB98E6D};

    /// True while objects remain.
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

    /// Appends `object`, which must not be null, and adds a reference. Ignored once reading has begun.
    virtual void Push(IObject* object) = 0;

    /// Reserves room for `count` objects, before the first one is pushed; ignored otherwise.
    virtual void Reserve(unsigned int count) = 0;

protected:
    ~IPushObjectEnumerator() = default;
};

/// An ordered list that holds one reference to each member; an object may stand in it several times.
class IObjectList : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xD1768FC0, 0x42BB48E7, 0x87E11D7D, 0x6AFB9D1E};

    /// Appends `object`, which must not be null, and adds a reference.
    virtual void AddObject(IObject* object) = 0;

    /// Removes and releases the member at `index`. Raises `CBadIndexException` "Index out of bounds".
    virtual void RemoveObject(unsigned int index) = 0;

    /// Removes and releases the first position of `object`. Raises `CObjectNotFoundException` "Cannot find
    /// object".
    virtual void RemoveObject(IObject* object) = 0;

    /// Releases every member in order and empties the list.
    virtual void RemoveAllObjects() = 0;

    /// A new enumerator over a snapshot of the members, owned by the caller. Raises what the class store
    /// raises.
    virtual IObjectEnumerator* EnumerateObjects() = 0;

    /// The same over the members that have the interface `interfaceId`.
    virtual IObjectEnumerator* EnumerateObjects(CId interfaceId) = 0;

    /// The number of members.
    virtual unsigned int GetObjectCount() = 0;

    /// The member at `index`, with one reference for the caller. Raises `CBadIndexException` "Index out of
    /// bounds".
    virtual IObject* GetObject(unsigned int index) = 0;

    /// The first position of `object`. Raises `CObjectNotFoundException` "Cannot find object".
    virtual int FindObject(IObject* object) = 0;

protected:
    ~IObjectList() = default;
};

/// Carries an untyped pointer, which is neither owned nor looked at; null at first.
class IPtrObject : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x145C5C82, 0x7D5D4D37, 0x988D01D0, 0xDAA08333};

    virtual void* GetPtr() = 0;
    virtual void SetPtr(void* pointer) = 0;

protected:
    ~IPtrObject() = default;
};

/// Carries a text; empty at first.
class IStringObject : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xE32A1605, 0xA9BD4213, 0xA3EA2131, 0x1D76690C};

    /// A copy of the text.
    virtual CString GetString() = 0;

    /// Copies `text`, which must not be null.
    virtual void SetString(const wchar* text) = 0;

protected:
    ~IStringObject() = default;
};

} // namespace vorlund
