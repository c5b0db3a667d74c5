// The life of the library: how many have opened it, and which functions are under way.

#include "vorlund_c/session.h"

#include "Guard.h"
#include "Handles.h"
#include "OwnDecoders.h"
#include "Records.h"

#include <vorlund/Debug.h>
#include <vorlund/Text.h>
#include <vorlund/Version.h>
#include <vorlund/Vorlund.h>

#include <atomic>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorlund::capi {

namespace {

/// Below 0 while the library is closed; else the number of functions that are under way.
constexpr int kClosed = std::numeric_limits<int>::min() / 2;
std::atomic<int> entries = kClosed;

/// Guards what follows, and opening and closing as a whole, in which callbacks of the host run.
std::mutex sessionMutex;
std::atomic<std::thread::id> sessionThread;
int openings = 0;
bool hidesBoxes = false;

class CSessionLock {
public:
    CSessionLock() {
        if (sessionThread.load() == std::this_thread::get_id())
            throw CFailure(VORLUND_ERROR_BUSY, "The library is being opened or closed by this thread");
        sessionMutex.lock();
        sessionThread = std::this_thread::get_id();
    }
    CSessionLock(const CSessionLock&) = delete;
    CSessionLock& operator=(const CSessionLock&) = delete;
    ~CSessionLock() {
        sessionThread = std::thread::id();
        sessionMutex.unlock();
    }
};

/// Where messages go that the host wants. Never destroyed: messages come to the end.
struct THandler {
    std::atomic<vorlund_message_handler> handler = nullptr;
    std::atomic<void*> user = nullptr;
};
THandler handlers[4];

void OnMessage(TDebugMessageType type, const wchar* text, void*) {
    const THandler& place = handlers[type];
    const vorlund_message_handler handler = place.handler.load();
    if (!handler) return;
    try {
        const std::string narrow = TextToUtf8(text);
        CallHost([&] {
            handler(place.user.load(), type, narrow.c_str());
            return VORLUND_OK;
        });
    } catch (const std::bad_alloc&) {
        // The message is lost.
    }
}

/// Puts the handlers of a destination in force.
void SetHandlers(int destination) {
    const auto type = static_cast<TDebugMessageType>(destination);
    const bool isWanted = handlers[destination].handler.load() || (type == DEBUG_MESSAGE_BOX && hidesBoxes);
    CDebug::SetHandler(type, isWanted ? &OnMessage : nullptr);
}

void ShowBoxes(bool isWanted) {
    hidesBoxes = !isWanted;
    SetHandlers(DEBUG_MESSAGE_BOX);
}

/// Adds the folder of the installed plug-ins for one session.
class CInstalledPlugins {
public:
    void Add() {
        const unsigned int before = v.GetPluginStore().GetPluginPathCount();
        AddInstalledPlugins();
        isAdded_ = v.GetPluginStore().GetPluginPathCount() > before;
        if (isAdded_) path_ = v.GetPluginStore().GetPluginPath(before);
    }
    /// The other folders stay as they are. The store forgets folders only all at once.
    void Remove() {
        if (!std::exchange(isAdded_, false)) return;
        CPluginStore& store = v.GetPluginStore();
        std::vector<CString> others;
        for (unsigned int i = 0; i < store.GetPluginPathCount(); ++i) {
            if (store.GetPluginPath(i) != path_) others.push_back(store.GetPluginPath(i));
        }
        store.ClearPluginPaths();
        for (const CString& path : others) store.AddPluginPath(path);
    }

private:
    bool isAdded_ = false;
    CString path_;
};
CInstalledPlugins installedPlugins;

/// Back to what was before the session.
void EndSession() {
    v.Abandon();
    ShowBoxes(true);
    installedPlugins.Remove();
    ForgetOwnDecoders();
}

/// Closes what a program leaves open when it ends.
struct TEnd {
    ~TEnd() {
        for (int destination = 0; destination < 4; ++destination) {
            const bool hides = destination == DEBUG_MESSAGE_BOX && hidesBoxes;
            if (handlers[destination].handler.exchange(nullptr) || hides)
                CDebug::SetHandler(static_cast<TDebugMessageType>(destination), nullptr);
        }
        if (entries.exchange(kClosed) < 0) return;
#ifndef _WIN32
        // On Windows the other threads are gone by now, and what waits for them would wait for ever.
        FreeAllHandles();
#endif
        v.Abandon();
    }
} atTheEnd;

} // namespace

CEntry::CEntry() {
    if (entries.fetch_add(1) >= 0) return;
    entries.fetch_sub(1);
    throw CFailure(VORLUND_ERROR_NOT_OPEN, "The library is not open");
}

CEntry::~CEntry() {
    entries.fetch_sub(1);
}

void GiveBackLocks() noexcept {
    v.GiveBackLocks();
}

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_open(uint32_t flags) {
    return GuardedAlways(__func__, [&] {
        Require((flags & ~uint32_t{VORLUND_OPEN_INSTALLED_PLUGINS | VORLUND_OPEN_WITHOUT_BOXES}) == 0,
                "There is no such flag");
        const CSessionLock lock;
        if (openings == 0) {
            ShowBoxes((flags & VORLUND_OPEN_WITHOUT_BOXES) == 0);
            try {
                if ((flags & VORLUND_OPEN_INSTALLED_PLUGINS) != 0) installedPlugins.Add();
                vorlund::v.Init();
            } catch (...) {
                EndSession();
                throw;
            }
            entries.fetch_sub(kClosed);
        }
        ++openings;
    });
}

int32_t VORLUND_CALL vorlund_close(void) {
    return GuardedAlways(__func__, [] {
        const CSessionLock lock;
        if (openings == 0) throw CFailure(VORLUND_ERROR_NOT_OPEN, "The library is not open");
        if (openings == 1) {
            int none = 0;
            if (!entries.compare_exchange_strong(none, kClosed))
                throw CFailure(VORLUND_ERROR_BUSY, "Another function is under way");
            FreeAllHandles();
            openings = 0;
            EndSession();
        } else {
            --openings;
        }
    });
}

int32_t VORLUND_CALL vorlund_is_open(int32_t* is_open) {
    return GuardedAlways(__func__, [&] {
        RequirePointer(is_open);
        *is_open = entries.load() >= 0 ? 1 : 0;
    });
}

int32_t VORLUND_CALL vorlund_set_message_handler(int32_t destination, vorlund_message_handler handler,
                                                 void* user) {
    return GuardedAlways(__func__, [&] {
        Require(destination >= VORLUND_MESSAGE_OUTPUT && destination <= VORLUND_MESSAGE_STDERR,
                "There is no such destination");
        const CSessionLock lock;
        handlers[destination].handler = nullptr;
        handlers[destination].user = user;
        handlers[destination].handler = handler;
        SetHandlers(destination);
    });
}

int32_t VORLUND_CALL vorlund_version(int32_t* library, int32_t* c_interface) {
    return GuardedAlways(__func__, [&] {
        if (library) *library = vorlund::GetVersion().number;
        if (c_interface) *c_interface = VORLUND_C_VERSION;
    });
}

int32_t VORLUND_CALL vorlund_release(void* handle) {
    return GuardedAlways(__func__, [&] {
        if (handle) Drop(TakeHandle(handle));
    });
}

int32_t VORLUND_CALL vorlund_handle_count(uint32_t* count) {
    return GuardedAlways(__func__, [&] {
        RequirePointer(count);
        *count = CountHandles();
    });
}
