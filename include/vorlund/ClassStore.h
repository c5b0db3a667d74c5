/// \file
/// The registry of creatable classes.
#pragma once

#include <vorlund/Id.h>

#include <concepts>

#include <vorlund/NamesBegin.h>

namespace vorlund {

class IObject;
class IObjectEnumerator;

/// Creates an object with one reference, or returns null. Called under the class store's lock.
///
/// \warning A factory must not raise: the class store then stays locked by the calling thread, and every
/// other thread that uses the store waits until that thread gives the lock back (`GiveBackLock`) or the store
/// is closed.
using TObjectFactory = IObject* (*)();

/// A class of the store.
struct TClassInfo {
    CId id;
    /// The registered name. Not copied: it must have static storage.
    const wchar* name;
    /// Null for a class that is found by lookups and cannot be created.
    TObjectFactory factory;

    constexpr TClassInfo(CId classId, const wchar* className, TObjectFactory classFactory)
        : id(classId), name(className), factory(classFactory) {}
};

/// The registry of every creatable class, the library's own and those of plug-ins. Registrations keep their
/// order; duplicates are kept, and the first registration of an identifier or of a name wins every lookup.
///
/// Registration, lookup, creation, enumeration, `Clear` and `Dump` may come from any thread. `Init` and
/// `Close` belong to the start and the end of the library. A thread that is inside another operation while
/// the store is closed, or waits for its lock, comes to no harm: see `Close`.
///
/// \code{.cpp}
/// // An object of a class, by its name.
/// CClassStore& store = v.GetClassStore();
/// const auto object = CRefPtr<IObject>::Adopt(store.CreateObject(VRL_L("vorlund::CObjectList")));
/// std::printf("%d\n", static_cast<bool>(object.Query<IObjectList>())); // prints 1
/// \endcode
class VRL_API CClassStore {
public:
    /// Closed.
    CClassStore() = default;
    CClassStore(const CClassStore&) = delete;
    CClassStore& operator=(const CClassStore&) = delete;

    /// Raises `CBugException` "Not closed" while open.
    ~CClassStore() noexcept(false);

    /// Opens the store; nothing happens when it is open.
    void Init();

    /// Forgets every class and closes the store; nothing happens when it is closed. Gives back the store's
    /// lock where the calling thread still holds it. Threads that wait for the lock find the store closed.
    /// Waits for another thread that holds the lock, 2 seconds at most, and not for one that has ended or
    /// that an operation has left with the lock. When such a thread holds it, raises `CBugException` "Still
    /// locked" (see `CBinaryLock`); the store is closed all the same, and its memory is freed when the last
    /// thread has left it.
    void Close();

    /// Gives back the store's lock where factories that raised have left it with the calling thread, so that
    /// other threads need not wait any longer. For the thread that has caught such an exception, at any time,
    /// also from within a factory: what the operations hold in which it is called stays with them. Returns
    /// how many times the lock was given back, 0 when there was nothing to give back or the store is closed.
    /// Never raises.
    /// Since version 0.1.
    int GiveBackLock() const noexcept;

    /// Forgets every class; nothing happens when the store is closed.
    void Clear();

    /// Registers a copy of `info` behind the others. Raises `CBugException` "Not initialized" while closed.
    void RegisterClassVrl(const TClassInfo& info);

    /// The store's own copy of the first registration, valid until `Clear` or `Close`. Raises
    /// `CClassNotFoundException` with an empty reason, and `CBugException` "Not initialized" while closed.
    const TClassInfo* GetClassInfo(const CId& id) const;
    const TClassInfo* GetClassInfo(const wchar* name) const;
    /// `GetClassInfo` under the names that it has after `<windows.h>` (see NamesBegin.h).
    const TClassInfo* GetClassInfoA(const CId& id) const { return GetClassInfo(id); }
    const TClassInfo* GetClassInfoA(const wchar* name) const { return GetClassInfo(name); }
    const TClassInfo* GetClassInfoW(const CId& id) const { return GetClassInfo(id); }
    const TClassInfo* GetClassInfoW(const wchar* name) const { return GetClassInfo(name); }

    /// Creates an object of the first class registered under `id`: the result of its factory, one reference
    /// owned by the caller, or null when the factory yields nothing. The factory runs under the store's lock,
    /// which the same thread may take again; when it raises, the exception passes on and the lock stays with
    /// the calling thread, until it calls `GiveBackLock` or `Close`.
    ///
    /// Raises `CClassNotFoundException` "Cannot find class", also when that class has no factory, and
    /// `CBugException` "Not initialized" while closed.
    IObject* CreateObject(const CId& id) const;

    /// The same by name (exact, case-sensitive); here `CClassNotFoundException` has an empty reason.
    IObject* CreateObject(const wchar* name) const;

    /// Narrow text would be taken for an identifier; names are wide: `VRL_L("...")`. Whoever has an
    /// identifier as narrow text writes `CId(text)`. Since version 0.1.
    template <std::same_as<char> TChar> IObject* CreateObject(const TChar* name) const = delete;

    /// A new enumerator, owned by the caller, with one `IPtrObject` per registration, in order, that points
    /// at the store's `TClassInfo` copy (valid until `Clear` or `Close`). It is made through `v`'s class
    /// store, so `CBugException` "Not initialized" is raised while the library is closed; another store that
    /// is closed gives an empty enumerator.
    IObjectEnumerator* EnumerateClasses() const;

    /// Lists the classes on the standard output (`DEBUG_MESSAGE_STDOUT`). A closed store lists nothing but
    /// "Class dump - not initialized!".
    void Dump() const;

private:
    struct TData;
    TData* data_ = nullptr;
};

} // namespace vorlund

#include <vorlund/NamesEnd.h>
