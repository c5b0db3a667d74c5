// What decoders of pictures and videos share: the positions of a result whose length is known.
#pragma once

#include <vorlund/StreamFilterImpl.h>

#include <algorithm>
#include <cstdint>

/// An input filter that delivers `length_` bytes, whatever the connected stream has. A class over it sets the
/// length when it connects, and -1 when it disconnects; its `Read` moves `position_`.
class CPositionedFilter : public vorlund::CInputFilterImpl<vorlund::IInputStreamFilter> {
    using TLayer = vorlund::CInputFilterImpl<vorlund::IInputStreamFilter>;

public:
    void Disconnect() override {
        length_ = -1;
        position_ = 0;
        TLayer::Disconnect();
    }
    std::int64_t GetLength() override { return IsConnected() ? length_ : TLayer::GetLength(); }
    std::int64_t Tell() override { return IsConnected() ? position_ : TLayer::Tell(); }
    /// Every position behind the end counts as the end. Raises `CIOException` "Position is negative".
    void Seek(std::int64_t position) override;
    bool Eof() override { return position_ >= length_; }
    /// At most to the end.
    void Skip(std::uint64_t count) override { position_ += static_cast<std::int64_t>(Limit(count)); }

protected:
    ~CPositionedFilter() noexcept(false) = default;

    bool IsConnected() const { return length_ >= 0; }
    /// As many of `count` bytes as there are behind the position.
    std::uint64_t Limit(std::uint64_t count) const {
        return std::min(count, static_cast<std::uint64_t>(std::max<std::int64_t>(length_ - position_, 0)));
    }

    std::int64_t length_ = -1;
    std::int64_t position_ = 0;
};
