// What is recorded, as a stream.
#pragma once

#include "vorlund/data/base/ReadErrorSource.h"
#include "vorlund/devices/audio/InputSession.h"

#include <vorlund/StreamImpl.h>

#include <memory>

namespace vorlund {

class CCaptureStream : public CInputStreamImpl<IInputStream>, public CReadErrorSource {
public:
    static constexpr CId ClassId{0xB9472D6E, 0x503F4A81, 0x9E68C17D, 0xA2F0358B};

    void SetSession(const std::shared_ptr<CInputSession>& session);

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ; }
    std::int64_t GetLength() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override { return position_; }
    bool Eof() override { return session_->IsAtEnd(); }
    const TDataFormat& GetFormat() override { return session_->GetFormat(); }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    std::uint32_t GetReadError() const override;

protected:
    ~CCaptureStream() = default;

private:
    std::shared_ptr<CInputSession> session_;
    std::int64_t position_ = 0;
};

} // namespace vorlund
