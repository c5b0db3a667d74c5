// The server is PulseAudio, or PipeWire in its place; SDL's driver has loaded libpulse already.
#include "SoundServer.h"

#include "Module_posix.h"

#include <optional>
#include <utility>
#include <vector>

#include <pulse/pulseaudio.h>

namespace {

/// X(name without "pa_")
#define VORLUND_PULSE_FUNCTIONS(X)                                                                           \
    X(context_connect)                                                                                       \
    X(context_disconnect)                                                                                    \
    X(context_get_server_info)                                                                               \
    X(context_get_sink_info_list)                                                                            \
    X(context_get_source_info_list)                                                                          \
    X(context_get_state)                                                                                     \
    X(context_new)                                                                                           \
    X(context_set_subscribe_callback)                                                                        \
    X(context_subscribe)                                                                                     \
    X(context_unref)                                                                                         \
    X(mainloop_free)                                                                                         \
    X(mainloop_get_api)                                                                                      \
    X(mainloop_iterate)                                                                                      \
    X(mainloop_new)                                                                                          \
    X(operation_get_state)                                                                                   \
    X(operation_unref)

struct TPulseLibrary {
#define VORLUND_PULSE_MEMBER(name) decltype(&pa_##name) name;
    VORLUND_PULSE_FUNCTIONS(VORLUND_PULSE_MEMBER)
#undef VORLUND_PULSE_MEMBER
};

const TPulseLibrary* FindPulseLibrary() {
    static const std::optional<TPulseLibrary> library = []() -> std::optional<TPulseLibrary> {
        void* const module = dlopen("libpulse.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        TPulseLibrary found{};
        bool isWhole = module != nullptr;
#define VORLUND_PULSE_FIND(name) isWhole = isWhole && FindIn(module, "pa_" #name, found.name);
        VORLUND_PULSE_FUNCTIONS(VORLUND_PULSE_FIND)
#undef VORLUND_PULSE_FIND
        if (!isWhole) return std::nullopt;
        return found;
    }();
    return library ? &*library : nullptr;
}

class CPulseServer final : public ISoundServer {
public:
    explicit CPulseServer(const TPulseLibrary& library) : library_(library), loop_(library.mainloop_new()) {}
    CPulseServer(const CPulseServer&) = delete;
    CPulseServer& operator=(const CPulseServer&) = delete;
    ~CPulseServer() override;

    bool Connect();
    void Refresh() override;
    bool HasChanged() override;
    int CountOutputs() override { return static_cast<int>(devices_[0].size()); }
    std::string GetDefault(bool isInput) override;
    bool IsLoopback(const std::string& name) override { return FindMonitor(name) != nullptr; }
    bool IsDefaultLoopback(const std::string& name) override;

private:
    struct TDevice {
        std::string path;
        std::string name;
        /// Of a source: the sink that it hears.
        std::string sink;
    };

    bool IsReady() const { return library_.context_get_state(context_) == PA_CONTEXT_READY; }
    /// Waits for one event of the server; false when that is not to be had any more.
    bool Iterate() { return library_.mainloop_iterate(loop_, 1, nullptr) >= 0 && IsReady(); }
    void WaitFor(pa_operation* operation);
    const TDevice* FindMonitor(const std::string& name) const;

    static void OnServer(pa_context*, const pa_server_info* info, void* self);
    static void OnSink(pa_context*, const pa_sink_info* info, int isLast, void* self);
    static void OnSource(pa_context*, const pa_source_info* info, int isLast, void* self);
    static void OnChange(pa_context*, pa_subscription_event_type_t, std::uint32_t, void* self);

    const TPulseLibrary& library_;
    pa_mainloop* loop_;
    pa_context* context_ = nullptr;
    bool hasChanged_ = false;
    std::string defaultPaths_[2];
    /// Sinks and sources.
    std::vector<TDevice> devices_[2];
};

CPulseServer::~CPulseServer() {
    if (context_) {
        library_.context_disconnect(context_);
        library_.context_unref(context_);
    }
    if (loop_) library_.mainloop_free(loop_);
}

bool CPulseServer::Connect() {
    if (!loop_) return false;
    context_ = library_.context_new(library_.mainloop_get_api(loop_), "Vorlund");
    if (!context_ || library_.context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return false;
    while (!IsReady()) {
        if (library_.mainloop_iterate(loop_, 1, nullptr) < 0 ||
            !PA_CONTEXT_IS_GOOD(library_.context_get_state(context_)))
            return false;
    }
    library_.context_set_subscribe_callback(context_, &OnChange, this);
    WaitFor(library_.context_subscribe(context_,
                                       static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER |
                                                                           PA_SUBSCRIPTION_MASK_SINK |
                                                                           PA_SUBSCRIPTION_MASK_SOURCE),
                                       nullptr, nullptr));
    Refresh();
    return true;
}

void CPulseServer::WaitFor(pa_operation* operation) {
    if (!operation) return;
    while (library_.operation_get_state(operation) == PA_OPERATION_RUNNING && Iterate()) {
    }
    library_.operation_unref(operation);
}

void CPulseServer::Refresh() {
    if (!IsReady()) return;
    hasChanged_ = false;
    for (auto& devices : devices_) devices.clear();
    WaitFor(library_.context_get_server_info(context_, &OnServer, this));
    WaitFor(library_.context_get_sink_info_list(context_, &OnSink, this));
    WaitFor(library_.context_get_source_info_list(context_, &OnSource, this));
}

bool CPulseServer::HasChanged() {
    while (IsReady() && library_.mainloop_iterate(loop_, 0, nullptr) > 0) {
    }
    return hasChanged_;
}

std::string CPulseServer::GetDefault(bool isInput) {
    for (const TDevice& device : devices_[isInput]) {
        if (device.path == defaultPaths_[isInput]) return device.name;
    }
    return {};
}

const CPulseServer::TDevice* CPulseServer::FindMonitor(const std::string& name) const {
    for (const TDevice& device : devices_[1]) {
        // SDL numbers devices of one name: "Name (2)".
        if (!device.sink.empty() && (name == device.name || name.starts_with(device.name + " (")))
            return &device;
    }
    return nullptr;
}

bool CPulseServer::IsDefaultLoopback(const std::string& name) {
    const TDevice* const monitor = FindMonitor(name);
    return monitor && monitor->sink == defaultPaths_[0];
}

void CPulseServer::OnServer(pa_context*, const pa_server_info* info, void* self) {
    auto& server = *static_cast<CPulseServer*>(self);
    if (!info) return;
    const char* const names[] = {info->default_sink_name, info->default_source_name};
    for (const int i : {0, 1}) server.defaultPaths_[i] = names[i] ? names[i] : "";
}

void CPulseServer::OnSink(pa_context*, const pa_sink_info* info, int, void* self) {
    if (info) static_cast<CPulseServer*>(self)->devices_[0].push_back({info->name, info->description, {}});
}

void CPulseServer::OnSource(pa_context*, const pa_source_info* info, int, void* self) {
    if (!info) return;
    const char* const sink = info->monitor_of_sink_name;
    static_cast<CPulseServer*>(self)->devices_[1].push_back(
        {info->name, info->description, sink ? sink : ""});
}

void CPulseServer::OnChange(pa_context*, pa_subscription_event_type_t, std::uint32_t, void* self) {
    static_cast<CPulseServer*>(self)->hasChanged_ = true;
}

} // namespace

std::unique_ptr<ISoundServer> ConnectSoundServer(std::string_view driver) {
    const TPulseLibrary* const library = driver == "pulseaudio" ? FindPulseLibrary() : nullptr;
    if (!library) return nullptr;
    auto server = std::make_unique<CPulseServer>(*library);
    if (!server->Connect()) return nullptr;
    return server;
}
