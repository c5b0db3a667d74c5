// The library object: the order of start-up and shut-down.
//
// `v` is the only object of the library that is built dynamically at load; everything else that lives as long
// as the library is constant-initialised, so it is usable before and after `v`. The other two objects whose
// end does something are in LibraryEnd.cpp; they end after `v`.
#include "vorlund/api/BuiltinClasses.h"

#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <exception>

namespace vorlund {
namespace {

constexpr TFailure kNotClosed{VRL_L("vorlund::CVorlund::~CVorlund"), VRL_L("src/vorlund/api/Vorlund"), 14,
                              VRL_L("Vorlund not closed before exiting!")};

/// Runs one step of an end that nothing may stop. False when it raised.
template <class TStep> bool Try(TStep step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}

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
    // First, so that a failure below leaves the library not initialised.
    initialized_ = false;
    // Kept for existing applications: the counter closes before anything else, so the destruction of an
    // object that is left over fails visibly.
    objectCounter_.Close();
    pluginStore_.Close();
    deviceClassStore_.Close();
    codecClassStore_.Close();
    classStore_.Close();
}

void CVorlund::Abandon() noexcept {
    initialized_ = false;
    Try([this] { objectCounter_.Close(); });
    // What is passing on while a destructor calls this may be a plug-in's.
    pluginStore_.KeepInProcess(std::uncaught_exceptions() > 0);
    // Each call gives up one plug-in more, be it that its close entry raises.
    while (!Try([this] { pluginStore_.Close(); })) {
    }
    pluginStore_.KeepInProcess(false);
    Try([this] { deviceClassStore_.Close(); });
    Try([this] { codecClassStore_.Close(); });
    Try([this] { classStore_.Close(); });
}

int CVorlund::GiveBackLocks() const noexcept {
    return classStore_.GiveBackLock() + deviceClassStore_.GiveBackLock();
}

} // namespace vorlund
