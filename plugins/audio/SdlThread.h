// SDL's audio, which one thread of the plug-in begins, uses and ends: SDL counts its users and gives out its
// devices without locks, wants COM on Windows, and reports losses from threads that must not be held up. The
// thread runs while somebody has a CSdlUse.
#pragma once

#include "SdlLibrary.h"
#include "SoundServer.h"

#include <vorlund/Event.h>

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A device that is open, as the thread sees it.
class ISdlDevice {
public:
    /// On the thread: the device is gone; it is closed when this returns. Must not wait.
    virtual void OnLost() noexcept = 0;

protected:
    ~ISdlDevice() = default;
};

struct TSdlDeviceInfo {
    std::string name;
    int channels = 0;
    int samplesPerSec = 0;
    bool isDefault = false;
    /// An input that hears an output.
    bool isLoopback = false;
};

class CSdlThread {
public:
    CSdlThread(const CSdlThread&) = delete;
    CSdlThread& operator=(const CSdlThread&) = delete;

    /// Runs `task` on the thread and waits for its end. What it raises, this raises.
    void Run(const std::function<void()>& task);

    /// \name Only in tasks
    /// They raise `CFailedException` with SDL's reason.
    /// @{
    const TSdlLibrary& GetLibrary() const { return library_; }
    /// Begins SDL's audio when it has not begun, or not since the sound system was lost.
    void Begin();
    /// The driver's name; null when SDL's audio has not begun.
    const char* GetDriver() const;
    /// Devices in the system's order, inputs that hear outputs among the inputs.
    std::vector<TSdlDeviceInfo> List(bool isInput);
    /// A paused device. `name` is empty for the default one; `sound` becomes what the device takes.
    SDL_AudioDeviceID Open(const std::string& name, bool isInput, SDL_AudioSpec& sound, ISdlDevice& user);
    /// Nothing happens when the device was lost before.
    void Close(ISdlDevice& user);
    void SetPaused(ISdlDevice& user, bool isPaused);
    /// `event` is set when devices or defaults have changed.
    void AddWatcher(vorlund::CEvent& event) { watchers_.push_back(&event); }
    void RemoveWatcher(vorlund::CEvent& event) { std::erase(watchers_, &event); }
    /// @}

private:
    friend class CSdlUse;
    struct TOpened {
        SDL_AudioDeviceID id;
        ISdlDevice* user;
    };
    struct TJob {
        const std::function<void()>* task;
        std::exception_ptr failure;
        bool isDone = false;
        /// The one behind it.
        TJob* next = nullptr;
    };

    explicit CSdlThread(const TSdlLibrary& library) : library_(library) {}
    ~CSdlThread();
    void Start() { thread_ = std::thread(&CSdlThread::Work, this); }
    void Work();
    void Do(TJob& job);
    void End();
    void Look();
    void TellWatchers();
    std::vector<std::string> GetNames() const;
    void LookForDefaults();
    void Compare();
    std::string FindDefault(bool isInput) const;
    SDL_AudioDeviceID OpenAs(const std::string& name, bool isInput, SDL_AudioSpec& sound) const;
    std::vector<TOpened>::iterator Find(const ISdlDevice& user);
    static int SDLCALL OnEvent(void* self, SDL_Event* event);

    const TSdlLibrary& library_;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable asked_;
    std::condition_variable answered_;
    /// A chain of those that wait, because closing must not need memory.
    TJob* firstJob_ = nullptr;
    TJob** nextJob_ = &firstJob_;
    bool hasEvent_ = false;
    bool isOver_ = false;

    // The thread's own.
    bool hasBegun_ = false;
    /// Something was lost or could not be opened: SDL may know a sound system that is not there any more, and
    /// looks for one only when it begins.
    bool isStale_ = false;
    /// What knows more than SDL; null where nothing does.
    std::unique_ptr<ISoundServer> server_;
    /// Whether SDL's list has been compared with the server's since that changed last.
    bool isCompared_ = true;
    std::vector<TOpened> opened_;
    std::vector<vorlund::CEvent*> watchers_;
    std::string defaults_[2];
    /// Of all devices, when SDL's audio was ended.
    std::vector<std::string> names_;
};

/// Keeps the thread running. One thread uses it at a time.
class CSdlUse {
public:
    CSdlUse() = default;
    CSdlUse(const CSdlUse&) = delete;
    CSdlUse& operator=(const CSdlUse&) = delete;
    ~CSdlUse() { Release(); }

    /// Starts the thread when it does not run. Raises `CFailedException`, without the library with what is to
    /// be installed. Nothing happens when this is in use.
    void Acquire();
    /// Ends the thread when nobody else uses it, and waits for its end.
    void Release();
    explicit operator bool() const { return thread_ != nullptr; }
    CSdlThread* operator->() const { return thread_; }
    CSdlThread* Get() const { return thread_; }

private:
    CSdlThread* thread_ = nullptr;
};
