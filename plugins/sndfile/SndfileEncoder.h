// The encoders of the files that libsndfile writes: one class for each kind.
#pragma once

#include "EncoderOptions.h"

#include <vorlund/AudioEncoder.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>
#include <memory>

class CSoundWriter;

/// Its layer holds the connected stream.
class CSndfileEncoder : public vorlund::COutputFilterImpl<vorlund::IAudioEncoder> {
    using TLayer = vorlund::COutputFilterImpl<vorlund::IAudioEncoder>;

public:
    void SetOption(const vorlund::wchar* name, const vorlund::wchar* value) override;
    void SetTag(const vorlund::wchar* name, const vorlund::wchar* text) override;
    void Finish() override;

    void Close() override;
    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override;
    /// Nothing: frames wait for others.
    void Flush() override {}
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override { return GetLength(); }
    /// Begins a file; what was begun before is abandoned. Raises `CIOException` "Stream is not connected",
    /// `CNullPtrException` "format is NULL", and `CDataFormatException` "Not PCM", "Stream has no positions"
    /// and when the kind of file cannot have this PCM.
    void SetFormat(const vorlund::TDataFormat* format) override;
    /// Raises `CNullPtrException` "buffer is NULL", `CInvalidStateException` "No format is set", what the
    /// stream raises, and `CIOException` "The encoder failed", also from then on.
    void Write(const void* buffer, std::uint64_t size) override;
    void Disconnect() override;

protected:
    explicit CSndfileEncoder(const TSoundKind& kind);
    ~CSndfileEncoder() noexcept(false);

private:
    CEncoderOptions options_;
    std::shared_ptr<CSoundWriter> writer_;
};

/// Registers all of them.
void RegisterEncoders();
