/// \file
/// Listens to what the library reports.
#pragma once

#include "support/Text.h"

#include <vorlund/Debug.h>

#include <mutex>
#include <string>
#include <vector>

namespace vorlund::test {

/// Where the messages of all four destinations go at the moment.
struct TDebugTarget {
    TDebugHandler handler;
    void* user;
};

inline TDebugTarget debugTarget;

/// Sends all four destinations to `target`; a null handler gives them their defaults back.
inline void SetDebugTarget(TDebugTarget target) {
    debugTarget = target;
    for (const TDebugMessageType type :
         {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR})
        CDebug::SetHandler(type, target.handler, target.user);
}

/// Drops all messages: no box ever waits for somebody. The state of the test programs between recorders.
inline void SilenceDebugMessages() {
    SetDebugTarget({[](TDebugMessageType, const wchar*, void*) {}, nullptr});
}

/// Gives all four destinations their defaults for the length of a block.
class CDefaultDebugOutput {
public:
    CDefaultDebugOutput() : former_(debugTarget) { SetDebugTarget({}); }
    CDefaultDebugOutput(const CDefaultDebugOutput&) = delete;
    CDefaultDebugOutput& operator=(const CDefaultDebugOutput&) = delete;
    ~CDefaultDebugOutput() { SetDebugTarget(former_); }

private:
    TDebugTarget former_;
};

/// Records every message from its construction on, instead of whoever listened before; recorders may be
/// nested. Messages may come from any thread, but none may be under way when it is destroyed.
class CDebugRecorder {
public:
    struct TEntry {
        TDebugMessageType type;
        wstring text;
    };

    CDebugRecorder() : former_(debugTarget) { SetDebugTarget({&OnMessage, this}); }
    CDebugRecorder(const CDebugRecorder&) = delete;
    CDebugRecorder& operator=(const CDebugRecorder&) = delete;
    ~CDebugRecorder() { SetDebugTarget(former_); }

    /// What has come so far, in order.
    std::vector<TEntry> GetEntries() const {
        const std::lock_guard guard(mutex_);
        return entries_;
    }

    /// The texts that came for one destination, for comparisons.
    std::vector<std::string> GetTexts(TDebugMessageType type) const {
        std::vector<std::string> texts;
        for (const TEntry& entry : GetEntries())
            if (entry.type == type) texts.push_back(Narrow(entry.text));
        return texts;
    }

    void Clear() {
        const std::lock_guard guard(mutex_);
        entries_.clear();
    }

private:
    static void OnMessage(TDebugMessageType type, const wchar* text, void* user) {
        CDebugRecorder& recorder = *static_cast<CDebugRecorder*>(user);
        const std::lock_guard guard(recorder.mutex_);
        recorder.entries_.push_back({type, text});
    }

    TDebugTarget former_;
    mutable std::mutex mutex_;
    std::vector<TEntry> entries_;
};

} // namespace vorlund::test
