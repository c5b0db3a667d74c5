// The library object: the order of start-up and shut-down.
//
// `v` is the one object of the library that is built dynamically at load; everything else that lives as long
// as the library is constant-initialised, so it is usable before and after `v`. What else has an end of its
// own stands in LibraryEnd.cpp and ends after `v`.
#include "vorlund/api/BuiltinClasses.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

namespace vorlund {
namespace {

constexpr TFailure kNotClosed{VRL_L("vorlund::CVorlund::~CVorlund"), VRL_L("src/vorlund/api/Vorlund"), 14,
                              VRL_L("Vorlund not closed before exiting!")};

} // namespace

CVorlund v;

CVorlund::CVorlund() = default;

CVorlund::~CVorlund() noexcept(false) {
    if (initialized_) Raise<CBugException>(kNotClosed);
}

void CVorlund::Init() {
    if (initialized_) return;
    classStore_.Init();
    codecClassStore_.Init();
    deviceClassStore_.Init();
    RegisterBuiltinClasses(classStore_);
    RegisterBuiltinDecoders(codecClassStore_);
    // Registering creates no objects, so the counter may come this late.
    objectCounter_.Init();
    pluginStore_.Init();
    pluginStore_.LoadAvailablePlugins();
    initialized_ = true;
}

void CVorlund::Close() {
    if (!initialized_) return;
    // First, so that a failure part-way leaves the library not initialised.
    initialized_ = false;
    // Kept on purpose: the counter closes before anything else, which makes late destruction visible.
    objectCounter_.Close();
    pluginStore_.Close();
    deviceClassStore_.Close();
    codecClassStore_.Close();
    classStore_.Close();
}

} // namespace vorlund
