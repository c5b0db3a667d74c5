// The device of a plug-in's table as a port, on top of which the library makes audio outputs and inputs.
#pragma once

#include "vorlund/api/tables/TableClasses.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>

#include <atomic>

namespace vorlund::tables {

class CTablePort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0x2E90C5A7, 0x61D84B3F, 0x97F2A06B, 0xD45C183E};

    explicit CTablePort(TClassPtr tableClass);

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) override;
    void Close() override;
    void Start() override;
    void Stop() override;
    std::uint32_t GetDelay() override;

protected:
    ~CTablePort() { CTablePort::Close(); }

private:
    struct TRecord : vorlund_plugin_client {
        CTablePort* owner;
    };

    static CTablePort& Of(const vorlund_plugin_client* client);
    static void VORLUND_PLUGIN_CALL OnProcess(const vorlund_plugin_client* client, void* buffer,
                                              std::uint32_t frames);
    static void VORLUND_PLUGIN_CALL OnXruns(const vorlund_plugin_client* client, std::uint32_t count);
    static void VORLUND_PLUGIN_CALL OnLost(const vorlund_plugin_client* client);
    static void VORLUND_PLUGIN_CALL OnExplain(const vorlund_plugin_client* client, const char* reason);

    bool IsAlive() const { return class_->life->isOpen; }
    [[noreturn]] void RaiseFailed(const struct TFailure& failure, std::int32_t code) const;

    const TClassPtr class_;
    TRecord record_;
    IAudioPortClient* client_ = nullptr;
    void* instance_ = nullptr;
    bool isOpen_ = false;
    bool isStarted_ = false;
    /// Written by the thread that starts and stops, read by that of the device.
    std::atomic<bool> isProcessing_ = false;
    /// In `Open` and `Start`: what the plug-in says about a failure.
    bool isExplaining_ = false;
    wstring reason_;
    /// A frame in bytes, and a byte of silence.
    std::uint32_t frameSize_ = 0;
    std::uint8_t silence_ = 0;
};

} // namespace vorlund::tables
