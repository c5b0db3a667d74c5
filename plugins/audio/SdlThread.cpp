#include "SdlThread.h"

#include "Texts.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/audio/SdlThread");
constexpr const wchar* kUse = VRL_L("CSdlUse::Acquire");
constexpr const wchar* kOpen = VRL_L("CSdlThread::Open");

constexpr TFailure kNoLibrary{
    kUse, kFile, 1, VRL_L("SDL 2.24 or later is missing: install libSDL2-2.0.so.0 (Debian: libsdl2-2.0-0)")};
constexpr TFailure kNoThread{kUse, kFile, 2, VRL_L("The system refuses a thread")};
constexpr TFailure kCannotBegin{VRL_L("CSdlThread::Begin"), kFile, 3, VRL_L("No sound system")};
constexpr TFailure kNotListed{kOpen, kFile, 4, VRL_L("No such device")};
constexpr TFailure kCannotOpen{kOpen, kFile, 5, VRL_L("Cannot open the device")};

/// How often what SDL does not report is looked for.
constexpr std::chrono::milliseconds kLook{500};

/// A hint for a moment, where neither the environment nor the application has one.
class CHint {
public:
    CHint(const TSdlLibrary& library, const char* name) : library_(library), name_(name) {
        isSet_ = !library.GetHint(name) && library.SetHintWithPriority(name, "1", SDL_HINT_DEFAULT);
    }
    CHint(const CHint&) = delete;
    CHint& operator=(const CHint&) = delete;
    ~CHint() {
        if (isSet_) library_.ResetHint(name_);
    }

private:
    const TSdlLibrary& library_;
    const char* name_;
    bool isSet_;
};

bool IsOurs(const SDL_AudioSpec& sound) {
    return (sound.format == AUDIO_U8 || sound.format == AUDIO_S16SYS || sound.format == AUDIO_S32SYS ||
            sound.format == AUDIO_F32SYS) &&
           sound.channels >= 1 && sound.channels <= 8;
}

/// Who uses the thread: plain data, so that nothing of it ends before the plug-in is unloaded.
struct TUsers {
    CSdlThread* thread = nullptr;
    int count = 0;
};
std::mutex usersMutex;
TUsers users;

} // namespace

void CSdlUse::Acquire() {
    if (thread_) return;
    const TSdlLibrary* const library = FindSdlLibrary();
    if (!library) Raise<CFailedException>(kNoLibrary);
    const std::scoped_lock lock(usersMutex);
    if (users.count == 0) {
        users.thread = new CSdlThread(*library);
        try {
            users.thread->Start();
        } catch (const std::system_error&) {
            delete std::exchange(users.thread, nullptr);
            Raise<CFailedException>(kNoThread);
        }
    }
    ++users.count;
    thread_ = users.thread;
}

void CSdlUse::Release() {
    if (!std::exchange(thread_, nullptr)) return;
    // Whoever comes meanwhile waits for the end: SDL is ended before it begins again.
    const std::scoped_lock lock(usersMutex);
    if (--users.count == 0) delete std::exchange(users.thread, nullptr);
}

CSdlThread::~CSdlThread() {
    if (!thread_.joinable()) return;
    {
        const std::scoped_lock lock(mutex_);
        isOver_ = true;
    }
    asked_.notify_one();
    thread_.join();
}

void CSdlThread::Run(const std::function<void()>& task) {
    TJob job{&task, {}};
    std::unique_lock lock(mutex_);
    *nextJob_ = &job;
    nextJob_ = &job.next;
    asked_.notify_one();
    answered_.wait(lock, [&] { return job.isDone; });
    if (job.failure) std::rethrow_exception(job.failure);
}

void CSdlThread::Do(TJob& job) {
    try {
        (*job.task)();
    } catch (...) {
        job.failure = std::current_exception();
    }
}

void CSdlThread::Work() {
    SilenceThisThread();
    std::unique_lock lock(mutex_);
    while (!isOver_) {
        asked_.wait_for(lock, kLook, [&] { return isOver_ || hasEvent_ || firstJob_; });
        if (firstJob_) {
            TJob& job = *firstJob_;
            firstJob_ = job.next;
            if (!firstJob_) nextJob_ = &firstJob_;
            lock.unlock();
            Do(job);
            lock.lock();
            job.isDone = true;
            answered_.notify_all();
            continue;
        }
        const bool hasEvent = std::exchange(hasEvent_, false);
        lock.unlock();
        Look();
        if (hasEvent) TellWatchers();
        lock.lock();
    }
    lock.unlock();
    End();
    // SDL keeps its last error for each thread, and notices the end of its own ones only.
    library_.TLSCleanup();
}

void CSdlThread::Begin() {
    // An application that uses SDL too may have ended all of it.
    if (hasBegun_ && !library_.WasInit(SDL_INIT_AUDIO)) hasBegun_ = false;
    if (hasBegun_ && isStale_ && opened_.empty()) {
        names_ = GetNames();
        End();
    }
    if (hasBegun_) return;
    library_.SetMainReady();
    {
        const CHint noHandlers(library_, SDL_HINT_NO_SIGNAL_HANDLERS);
        const CHint monitors(library_, SDL_HINT_AUDIO_INCLUDE_MONITORS);
        isStale_ = library_.InitSubSystem(SDL_INIT_AUDIO) != 0;
        if (isStale_)
            Raise<CFailedException>(kCannotBegin, KeepReason(library_.GetError(), kCannotBegin.reason));
    }
    hasBegun_ = true;
    // SDL calls it on the thread that finds the change, so nobody needs to take events out of its queue.
    library_.AddEventWatch(&OnEvent, this);
    server_ = ConnectSoundServer(library_.GetCurrentAudioDriver());
    isCompared_ = false;
    // Who lists devices makes SDL begin anew, and must not be told each time.
    if (GetNames() != names_) TellWatchers();
    for (const bool isInput : {false, true}) defaults_[isInput] = FindDefault(isInput);
}

void CSdlThread::End() {
    if (!std::exchange(hasBegun_, false)) return;
    server_.reset();
    library_.DelEventWatch(&OnEvent, this);
    library_.QuitSubSystem(SDL_INIT_AUDIO);
}

int SDLCALL CSdlThread::OnEvent(void* self, SDL_Event* event) {
    if (event->type != SDL_AUDIODEVICEADDED && event->type != SDL_AUDIODEVICEREMOVED) return 0;
    auto& thread = *static_cast<CSdlThread*>(self);
    {
        const std::scoped_lock lock(thread.mutex_);
        thread.hasEvent_ = true;
    }
    thread.asked_.notify_one();
    return 0;
}

void CSdlThread::Look() {
    if (!hasBegun_) return;
    for (std::size_t i = 0; i < opened_.size();) {
        const TOpened opened = opened_[i];
        if (library_.GetAudioDeviceStatus(opened.id) != SDL_AUDIO_STOPPED) {
            ++i;
            continue;
        }
        isStale_ = true;
        opened_.erase(opened_.begin() + static_cast<std::ptrdiff_t>(i));
        opened.user->OnLost();
        library_.CloseAudioDevice(opened.id);
    }
    if (!watchers_.empty()) LookForDefaults();
}

void CSdlThread::LookForDefaults() {
    if (server_) {
        if (!server_->HasChanged()) {
            if (!std::exchange(isCompared_, true)) Compare();
            return;
        }
        server_->Refresh();
        isCompared_ = false;
    }
    for (const bool isInput : {false, true}) {
        std::string name = FindDefault(isInput);
        if (name == defaults_[isInput]) continue;
        defaults_[isInput] = std::move(name);
        TellWatchers();
    }
}

std::vector<std::string> CSdlThread::GetNames() const {
    std::vector<std::string> names;
    for (const bool isInput : {false, true}) {
        const int count = library_.GetNumAudioDevices(isInput);
        for (int i = 0; i < count; ++i) {
            const char* const name = library_.GetAudioDeviceName(i, isInput);
            if (name) names.emplace_back(name);
        }
    }
    return names;
}

void CSdlThread::Compare() {
    // SDL misses what happens before its thread listens.
    if (library_.GetNumAudioDevices(false) == server_->CountOutputs()) return;
    isStale_ = true;
    TellWatchers();
}

void CSdlThread::TellWatchers() {
    for (CEvent* const watcher : watchers_) watcher->SetState(true);
}

const char* CSdlThread::GetDriver() const {
    return hasBegun_ ? library_.GetCurrentAudioDriver() : nullptr;
}

std::string CSdlThread::FindDefault(bool isInput) const {
    if (server_) return server_->GetDefault(isInput);
    char* name = nullptr;
    SDL_AudioSpec sound{};
    if (library_.GetDefaultAudioInfo(&name, &sound, isInput) != 0 || !name) return {};
    std::string result = name;
    library_.free(name);
    return result;
}

std::vector<TSdlDeviceInfo> CSdlThread::List(bool isInput) {
    Begin();
    std::vector<TSdlDeviceInfo> list;
    if (server_) server_->Refresh();
    const std::string defaultName = FindDefault(isInput);
    const int count = library_.GetNumAudioDevices(isInput);
    for (int i = 0; i < count; ++i) {
        const char* const name = library_.GetAudioDeviceName(i, isInput);
        if (!name) continue;
        TSdlDeviceInfo info{name};
        SDL_AudioSpec sound{};
        if (library_.GetAudioDeviceSpec(i, isInput, &sound) == 0) {
            info.channels = sound.channels;
            info.samplesPerSec = sound.freq;
        }
        info.isLoopback = server_ && isInput && server_->IsLoopback(info.name);
        info.isDefault = info.isLoopback ? server_->IsDefaultLoopback(info.name) : info.name == defaultName;
        list.push_back(std::move(info));
    }
    // A driver that does not say has one that it calls its own.
    if (!server_ && list.size() == 1) list.front().isDefault = true;
    if (list.empty()) isStale_ = true;
    return list;
}

SDL_AudioDeviceID CSdlThread::OpenAs(const std::string& name, bool isInput, SDL_AudioSpec& sound) const {
    const char* const device = name.empty() ? nullptr : name.c_str();
    const SDL_AudioSpec wish = sound;
    SDL_AudioDeviceID id =
        library_.OpenAudioDevice(device, isInput, &wish, &sound, SDL_AUDIO_ALLOW_ANY_CHANGE);
    if (id == 0 || IsOurs(sound)) return id;
    // What the library has no name for, SDL converts.
    library_.CloseAudioDevice(id);
    return library_.OpenAudioDevice(device, isInput, &wish, &sound,
                                    SDL_AUDIO_ALLOW_FREQUENCY_CHANGE | SDL_AUDIO_ALLOW_SAMPLES_CHANGE);
}

SDL_AudioDeviceID CSdlThread::Open(const std::string& name, bool isInput, SDL_AudioSpec& sound,
                                   ISdlDevice& user) {
    Begin();
    opened_.reserve(opened_.size() + 1);
    if (!name.empty()) {
        // SDL would take a name that it does not know for that of a file, with some drivers.
        const std::vector<TSdlDeviceInfo> list = List(isInput);
        if (std::ranges::find(list, name, &TSdlDeviceInfo::name) == list.end()) {
            isStale_ = true;
            Raise<CFailedException>(kNotListed);
        }
    }
    const SDL_AudioDeviceID id = OpenAs(name, isInput, sound);
    if (id == 0) {
        isStale_ = true;
        Raise<CFailedException>(kCannotOpen, KeepReason(library_.GetError(), kCannotOpen.reason));
    }
    opened_.push_back({id, &user});
    return id;
}

std::vector<CSdlThread::TOpened>::iterator CSdlThread::Find(const ISdlDevice& user) {
    return std::ranges::find(opened_, &user, &TOpened::user);
}

void CSdlThread::Close(ISdlDevice& user) {
    const auto opened = Find(user);
    if (opened == opened_.end()) return;
    const SDL_AudioDeviceID id = opened->id;
    opened_.erase(opened);
    library_.CloseAudioDevice(id);
}

void CSdlThread::SetPaused(ISdlDevice& user, bool isPaused) {
    const auto opened = Find(user);
    if (opened != opened_.end()) library_.PauseAudioDevice(opened->id, isPaused);
}
