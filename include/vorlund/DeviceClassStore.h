/// \file
/// The registry of device classes.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

class IDevice;
class IObjectList;

/// What a device is for. The library uses no other value.
enum TDeviceType : int { DEVICE_TYPE_AUDIO = 0, DEVICE_TYPE_VIDEO = 1 };

/// A device class: a class of the class store that implements `IDevice`, and what it is for.
struct TDeviceClassInfo {
    CId classId;
    TDeviceType deviceType;

    constexpr TDeviceClassInfo(CId id, TDeviceType type) : classId(id), deviceType(type) {}
};

/// The registry of device classes. Registrations keep their order; duplicates are kept, and the first class
/// of a type is the one that is created. The library itself registers none.
///
/// Registration, creation and enumeration may come from any thread; each holds the store's lock, the creation
/// of objects included. The class store's lock is taken under it. The classes "vorlund::CAudioDevice" and
/// "vorlund::CVideoDevice" take the two locks in the opposite order, so threads that create devices at the
/// same time must all use `CreateDevice`, or all the class store: otherwise they can wait for each other
/// without end. `Init` and `Close` belong to the start and the end of the library. A thread that is inside
/// another operation while the store is closed, or waits for its lock, comes to no harm: see `Close`.
///
/// \code{.cpp}
/// // The classes of devices, by their names; the plug-ins window-output and audio bring one each.
/// const auto devices = v.GetDeviceClassStore().EnumerateDevices();
/// for (const TDeviceClassInfo& device : EachRecord<TDeviceClassInfo>(devices))
///     CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, VRL_L("%s"), device.classId.ToString().c_str());
/// \endcode
class VRL_API CDeviceClassStore {
public:
    /// Closed.
    CDeviceClassStore() = default;
    CDeviceClassStore(const CDeviceClassStore&) = delete;
    CDeviceClassStore& operator=(const CDeviceClassStore&) = delete;

    /// Raises `CBugException` "Not closed" while open.
    ~CDeviceClassStore() noexcept(false);

    /// Opens the store; nothing happens when it is open.
    void Init();

    /// Forgets every class and closes the store; nothing happens when it is closed. Gives back the store's
    /// lock where the calling thread still holds it. Threads that wait for the lock find the store closed.
    /// Waits for another thread that holds the lock, 2 seconds at most, and not for one that has ended or
    /// that an operation has left with the lock. When such a thread holds it, raises `CBugException` "Still
    /// locked" (see `CBinaryLock`); the store is closed all the same, and its memory is freed when the last
    /// thread has left it.
    void Close();

    /// Gives back the store's lock where `CreateDevice` has left it with the calling thread, as
    /// `CClassStore::GiveBackLock` does for the class store. After a creation through the class store
    /// ("vorlund::CAudioDevice", "vorlund::CVideoDevice") both stores are left locked:
    /// `CVorlund::GiveBackLocks` sees to both. Returns how many times the lock was given back. Never raises.
    /// Since version 0.1.
    int GiveBackLock() const noexcept;

    /// Registers a copy of `info` behind the others. Raises `CBugException` "Not initialized" while closed
    /// and "Class must be registered first" when the class store does not know the class.
    void RegisterDevice(const TDeviceClassInfo& info);

    /// A new object of the first class registered for `type`, one reference owned by the caller.
    ///
    /// Raises `CClassNotFoundException` with an empty reason when there is none.
    ///
    /// \warning After this exception the store's lock stays with the calling thread, which can go on using
    /// the store; other threads wait until that thread calls `GiveBackLock`, or the store is closed.
    ///
    ///
    /// Raises `CBugException` "Not initialized" while closed, "Device class not found" when the class yields
    /// no object and "Device interface not found" when the object is no `IDevice`, and passes on what the
    /// class store raises.
    IDevice* CreateDevice(TDeviceType type) const;

    /// A new list, owned by the caller, with one `IPtrObject` per registration, in order, that points at the
    /// store's `TDeviceClassInfo` copy (valid until `Close`); empty while the store is closed. Raises what
    /// creating an object raises, and `CBugException` "Cannot create object list" or "Cannot create pointer
    /// object" when their classes were replaced by others of another kind.
    IObjectList* EnumerateDevices() const;

private:
    struct TData;
    TData* data_ = nullptr;
};

} // namespace vorlund
