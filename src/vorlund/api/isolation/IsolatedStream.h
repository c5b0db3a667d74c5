// The stream that stands for a decoder in another process.
#pragma once

#include "vorlund/api/isolation/BlockWindow.h"
#include "vorlund/api/isolation/Conversation.h"
#include "vorlund/data/base/FormatRecord.h"
#include "vorlund/data/codecs/ClassNames.h"

#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>

#include <memory>

namespace vorlund::isolation {

/// What the other process tells of the end of its chain.
struct TFoundChain {
    std::uint32_t capabilities = 0;
    std::int64_t length = kNoLength;
    wstring names;
    CFormatRecord format;
};

class CIsolatedStream : public CInputStreamImpl<INamedLink> {
    using TLayer = CInputStreamImpl<INamedLink>;

public:
    static constexpr CId ClassId{0x5B0E93A1, 0x47D86C2F, 0xB9153E80, 0x2C6FA47D};

    /// Once, before anything else.
    void Begin(CRefPtr<IInputStream> source, std::shared_ptr<CConversation> conversation, TFoundChain chain);

    void Close() override {}
    std::uint32_t GetCapabilities() override { return chain_.capabilities; }
    std::int64_t GetLength() override;
    void Flush() override {}
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override { return position_; }
    bool Eof() override;
    const TDataFormat& GetFormat() override { return chain_.format.Get(); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using TLayer::Read;
    void Skip(std::uint64_t count) override;

    /// It stays with its source: null ends the process, another stream is refused.
    void Connect(IInputStream* stream) override;
    void Disconnect() override;
    IInputStream* GetInputStream() override { return CRefPtr<IInputStream>(source_).Detach(); }

    CString GetLinkName() override { return (chain_.names + VRL_L(" (isolated)")).c_str(); }

protected:
    /// The source may use this stream once more.
    void GiveBack() { Disconnect(); }

private:
    /// Fetches the bytes at the position; none at the end.
    void Fetch();
    void Receive(IInputStream& source, CConversation& conversation);

    CRefPtr<IInputStream> source_;
    std::shared_ptr<CConversation> conversation_;
    TFoundChain chain_;
    std::int64_t position_ = 0;
    CBlockWindow block_;
    bool isAtEnd_ = false;
    bool isBusy_ = false;
};

} // namespace vorlund::isolation
