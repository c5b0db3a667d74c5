/// \file
/// The library object `v`. An application calls `v.Init()` before it creates any object and `v.Close()`
/// before it ends or unloads the library.
#pragma once

#include <vorlund/ClassStore.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectCounter.h>

namespace vorlund {

/// The library object. `Init` and `Close` take no lock: they run on the application's main thread, with no
/// other thread in the library. The stores guard their own contents.
class VRL_API CVorlund {
public:
    /// Not initialised.
    CVorlund();
    CVorlund(const CVorlund&) = delete;
    CVorlund& operator=(const CVorlund&) = delete;

    /// Raises `CBugException` "Vorlund not closed before exiting!" while initialised, before anything is
    /// destroyed. Nobody can catch it: the open counter and stores raise while it passes. For `v` that is
    /// when the library is unloaded or the process ends.
    ~CVorlund() noexcept(false);

    /// Opens the stores, registers the built-in classes and decoders and opens the object counter; does
    /// nothing when initialised. What a step raises passes on; the steps before it stay done and `Close` does
    /// nothing.
    void Init();

    /// Closes the object counter, then the stores; does nothing when not initialised. Objects that still
    /// exist raise `CBugException` "Not initialized" when they are destroyed later. `Init` may be called
    /// again: the stores then start empty and serial numbers at 1.
    void Close();

    CClassStore& GetClassStore() { return classStore_; }
    CCodecClassStore& GetCodecClassStore() { return codecClassStore_; }
    CDeviceClassStore& GetDeviceClassStore() { return deviceClassStore_; }
    CObjectCounter& GetObjectCounter() { return objectCounter_; }

private:
    bool initialized_ = false;
    CClassStore classStore_;
    CCodecClassStore codecClassStore_;
    CDeviceClassStore deviceClassStore_;
    CObjectCounter objectCounter_;
};

/// The one library object.
VRL_API extern CVorlund v;

} // namespace vorlund
