/// \file
/// The library object `v`. An application calls `v.Init()` before it creates any object and `v.Close()`
/// before it ends or unloads the library.
#pragma once

#include <vorlund/ClassStore.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectCounter.h>
#include <vorlund/PluginStore.h>

namespace vorlund {

/// The library object. `Init`, `Close` and `Abandon` take no lock: they run on the application's main thread,
/// with no other thread in the library. The stores guard their own contents.
class VRL_API CVorlund {
public:
    /// Not initialised.
    CVorlund();
    CVorlund(const CVorlund&) = delete;
    CVorlund& operator=(const CVorlund&) = delete;

    /// Raises `CBugException` "Vorlund not closed before exiting!" while initialised, before anything is
    /// destroyed. It cannot be caught, because the open counter and stores raise too while it passes: it ends
    /// the process. `v` is destroyed when the library is unloaded or the process ends, so call `Close`
    /// before.
    ~CVorlund() noexcept(false);

    /// Opens the stores, registers the built-in classes and decoders, opens the object counter and loads
    /// every available plug-in; does nothing when initialised. What a step raises, plug-ins and the search of
    /// their folders ("Cannot search") included, passes on; the steps before it stay done and `Close` does
    /// nothing. `Abandon` then closes what is open, and `Init` may be tried again.
    void Init();

    /// Closes the object counter, then the plug-in store, which closes and unloads the plug-ins, then the
    /// other stores; does nothing when not initialised.
    ///
    /// \warning Release every object before. One that still exists raises `CBugException` "Not initialized"
    /// when it is destroyed later.
    ///
    /// `Init` may be called again: the stores then start empty and serial numbers at 1.
    void Close();

    /// Closes whatever is open, in the order of `Close`: what a completed `Init` has opened, and what one has
    /// opened that raised. What a step raises is dropped, and the next one follows. Afterwards the library is
    /// as it was before `Init`, and ends without a complaint. For every way out of a program, whatever
    /// happened before: may be called in any state and again. Never raises. Called by a destructor while an
    /// exception is passing, it leaves the plug-ins in the process, because the exception may be of one of
    /// them.
    ///
    /// The warning of `Close` about objects that still exist holds here too.
    /// Since version 0.1.
    void Abandon() noexcept;

    /// Gives back the locks of the class store and the device class store where operations that raised have
    /// left them with the calling thread: `CClassStore::GiveBackLock` and `CDeviceClassStore::GiveBackLock`
    /// tell which. For the thread that has caught the exception. Returns how many times a lock was given
    /// back, 0 when there was nothing to give back. Any thread; never raises.
    /// Since version 0.1.
    int GiveBackLocks() const noexcept;

    CClassStore& GetClassStore() { return classStore_; }
    CCodecClassStore& GetCodecClassStore() { return codecClassStore_; }
    CDeviceClassStore& GetDeviceClassStore() { return deviceClassStore_; }
    CPluginStore& GetPluginStore() { return pluginStore_; }
    CObjectCounter& GetObjectCounter() { return objectCounter_; }

private:
    bool initialized_ = false;
    CClassStore classStore_;
    CCodecClassStore codecClassStore_;
    CDeviceClassStore deviceClassStore_;
    CPluginStore pluginStore_;
    CObjectCounter objectCounter_;
};

/// The one library object.
VRL_API extern CVorlund v;

/// Adds the folder of the plug-ins that belong to this library to those of `v`'s plug-in store:
/// "vorlund-plugins" or "vorlund/plugins" beside the library's own file, or "../lib/vorlund/plugins" from
/// there, whichever is there first; so it is found wherever an installation has been moved. Call it before
/// `v.Init()`, on the application's main thread. Does nothing when the folder is searched already, so a
/// second call changes nothing.
///
/// \return false when there is no such folder
///
/// Raises `std::bad_alloc`. Since version 0.1.
VRL_API bool AddInstalledPlugins();

} // namespace vorlund
