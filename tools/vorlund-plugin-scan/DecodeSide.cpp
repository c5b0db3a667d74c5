#include "DecodeSide.h"

#include "ScanSide.h"

#include "vorlund/api/isolation/BlockWindow.h"
#include "vorlund/api/isolation/IsolationProtocol.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cstdint>
#include <exception>

using namespace vorlund;
using namespace vorlund::isolation;

namespace {

/// The process that wants the samples. Without it there is nothing to do any more.
class CApplication {
public:
    explicit CApplication(const std::string& channel) : channel_(channel) {}

    void Tell(CMessage& message) const {
        const std::span<const std::uint8_t> bytes = message.Finish();
        if (!Send(channel_, bytes.data(), bytes.size())) EndNow();
    }

    /// The next message of that kind, valid until the one after it.
    CReceived Hear(TKind kind) {
        THeader header;
        if (!Receive(channel_, &header, sizeof(header)) || header.mark != kMark || header.kind != kind ||
            header.size > kMaxMessage)
            EndNow();
        content_.resize(header.size);
        if (!Receive(channel_, content_.data(), content_.size())) EndNow();
        return CReceived(kind, content_);
    }

private:
    const std::string channel_;
    std::vector<std::uint8_t> content_;
};

/// The source, whose bytes the application has.
class CSourceStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0xC42D7A19, 0x3E5F4B80, 0x9107D6E2, 0x58BA1F63};

    void Begin(CApplication& application, std::uint32_t capabilities, std::int64_t length) {
        application_ = &application;
        capabilities_ = capabilities;
        length_ = length;
    }

    std::uint32_t GetCapabilities() override { return capabilities_; }
    std::int64_t GetLength() override {
        if (length_ == kNoLength) throw COperationNotSupportedException(VRL_L(""), VRL_L(""), 0, VRL_L(""));
        return length_;
    }
    void Seek(std::int64_t position) override { position_ = std::max<std::int64_t>(position, 0); }
    std::int64_t Tell() override { return position_; }
    bool Eof() override { return length_ == kNoLength ? isAtEnd_ : position_ >= length_; }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        return block_.Read(position_, buffer, size, [this] { Fetch(); });
    }
    using CInputStreamImpl<IInputStream>::Read;
    void Skip(std::uint64_t count) override { position_ += static_cast<std::int64_t>(count); }

private:
    /// Little after a jump, more and more in a row.
    void Fetch() {
        constexpr std::uint32_t kFirst = 4096;
        const bool isNext = position_ == block_.GetEnd() && window_ > 0;
        window_ = isNext ? std::min(2 * window_, kMaxBlock) : kFirst;
        CMessage question(TKind::SourceRead);
        application_->Tell(question.Put(position_).Put(window_));
        CReceived answer = application_->Hear(TKind::Source);
        const std::span<const std::uint8_t> bytes = answer.GetRest();
        block_.Set(position_, bytes);
        isAtEnd_ = bytes.empty();
    }

    CApplication* application_ = nullptr;
    std::uint32_t capabilities_ = 0;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
    bool isAtEnd_ = false;
    CBlockWindow block_;
    std::uint32_t window_ = 0;
};

void TellEntry(const CApplication& application, const TDecodeEntry& entry) {
    CMessage message(TKind::Entry);
    message.Put(entry.classId).PutText(entry.className.GetBuffer()).Put(entry.depth);
    message.Put(static_cast<std::int32_t>(entry.outcome)).Put(static_cast<std::int32_t>(entry.exceptionType));
    for (const CString& text : {entry.method, entry.reason, entry.container, entry.values, entry.remarks})
        message.PutText(text.GetBuffer());
    application.Tell(message.Put(entry.bytesRead).Put(entry.seconds));
}

/// Tells of the search while it goes on, so that what has been is known when it ends with the process.
class CNarrator {
public:
    explicit CNarrator(const CApplication& application) : application_(application) {}

    /// A choice that fills the report and tells of it.
    TDecoderChoice GetChoice() {
        return {.report = &report_, .onCandidate = [this](const CId& classId) {
                    TellEntries();
                    CMessage message(TKind::Trying);
                    application_.Tell(
                        message.Put(classId).PutText(v.GetClassStore().GetClassInfo(classId)->name));
                }};
    }
    void TellEntries() {
        for (; told_ < report_.GetEntries().size(); ++told_)
            TellEntry(application_, report_.GetEntries()[told_]);
    }

private:
    const CApplication& application_;
    CDecodeReport report_;
    std::size_t told_ = 0;
};

void LoadPlugins(const std::vector<std::string>& folders) {
    CPluginStore& store = v.GetPluginStore();
    store.ClearPluginPaths();
    for (const std::string& folder : folders) store.AddPluginPath(PathFromUtf8(folder.c_str()).c_str());
    store.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    v.Init();
}

std::int64_t GetLength(IInputStream& stream) {
    try {
        return std::max(stream.GetLength(), kNoLength);
    } catch (const CException&) {
        return kNoLength;
    }
}

wstring JoinNames(IInputStream& end) {
    wstring names;
    const std::vector<TChainLink> links = ListChain(end);
    // The last one is the source, which the application names itself.
    for (std::size_t i = links.size(); i-- > 1;) {
        if (!names.empty()) names += VRL_L(" > ");
        names += links[i - 1].className.GetBuffer();
    }
    return names;
}

void TellFound(const CApplication& application, IInputStream& end) {
    CMessage found(TKind::Found);
    found.Put(end.GetCapabilities()).Put(GetLength(end)).PutText(JoinNames(end).c_str());
    const TDataFormat& format = end.GetFormat();
    application.Tell(found.PutBytes(&format, format.size));
}

/// The end of the chain, or nothing.
CRefPtr<IInputStream> Search(CApplication& application) {
    CReceived question = application.Hear(TKind::Open);
    const auto formatId = question.Get<CId>();
    const auto capabilities = question.Get<std::uint32_t>();
    const auto length = question.Get<std::int64_t>();
    const auto source = CRefPtr<CSourceStream>::Adopt(new CFinalObject<CSourceStream>);
    source->Begin(application, capabilities, length);
    CNarrator narrator(application);
    CRefPtr<IInputStream> end;
    try {
        end = CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeStream(source.Get(), formatId, narrator.GetChoice()));
    } catch (...) {
        // The report says what it was.
    }
    narrator.TellEntries();
    return end;
}

/// At most `size` bytes from `position` on; as many as there are.
std::size_t ReadAt(IInputStream& stream, std::int64_t position, std::uint8_t* bytes, std::size_t size) {
    const bool hasPositions = (stream.GetCapabilities() & STREAM_CAPABILITY_SEEK) != 0;
    if (hasPositions && stream.Tell() != position) stream.Seek(position);
    std::size_t filled = 0;
    while (filled < size) {
        const std::uint64_t count = stream.Read(bytes + filled, size - filled);
        if (count == 0) break;
        filled += static_cast<std::size_t>(std::min<std::uint64_t>(count, size - filled));
    }
    return filled;
}

void AnswerRead(CApplication& application, IInputStream& stream) {
    CReceived question = application.Hear(TKind::Read);
    const auto position = question.Get<std::int64_t>();
    std::vector<std::uint8_t> bytes(std::min(question.Get<std::uint32_t>(), kMaxBlock));
    try {
        bytes.resize(ReadAt(stream, position, bytes.data(), bytes.size()));
        CMessage data(TKind::Data);
        application.Tell(data.Put(GetLength(stream)).PutBytes(bytes.data(), bytes.size()));
    } catch (...) {
        CMessage failed(TKind::Failed);
        application.Tell(failed);
    }
}

} // namespace

void Decode(const std::string& channel, const std::vector<std::string>& folders) {
    CApplication application(channel);
    try {
        if (!EnterSandbox()) {
            application.Hear(TKind::Open);
            CMessage unsafe(TKind::Unsafe);
            application.Tell(unsafe);
            EndNow();
        }
        LoadPlugins(folders);
        const CRefPtr<IInputStream> end = Search(application);
        if (!end) {
            CMessage notFound(TKind::NotFound);
            application.Tell(notFound);
            EndNow();
        }
        TellFound(application, *end);
        for (;;) AnswerRead(application, *end);
    } catch (...) {
        // The library may be half open, which is no state to end in by itself.
        EndNow();
    }
}
