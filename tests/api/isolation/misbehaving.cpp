// The plug-in whose decoder does what the text at the beginning of its input says, once it is connected or
// read.
#include "api/isolation/Attempts.h"

#include <vorlund/DataFormat.h>
#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>
#include <vorlund/Plugin.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

using namespace vorlund;

namespace {

constexpr TFailure kRefused{VRL_L("test::CMisbehavingDecoder::Connect"), VRL_L("tests/misbehaving"), 1,
                            VRL_L("Not for me")};
constexpr TFailure kUnreadable{VRL_L("test::CMisbehavingDecoder::Read"), VRL_L("tests/misbehaving"), 2,
                               VRL_L("Nothing to read")};

[[noreturn]] void Hang() {
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

/// Without end, or nearly so: 3 GiB.
void Allocate() {
    std::vector<std::unique_ptr<void, decltype(&std::free)>> blocks;
    for (int i = 0; i < 192; ++i) {
        blocks.emplace_back(std::malloc(16 << 20), &std::free);
        if (!blocks.back()) throw std::bad_alloc();
    }
}

void Behave(const std::string& how) {
    if (how == "crash") {
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1;
    }
    if (how == "exit") std::_Exit(5);
    if (how == "hang") Hang();
    if (how == "raise") throw 42;
    if (how == "allocate") Allocate();
}

class CMisbehavingDecoder : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    static constexpr CId ClassId{0x7E57C1A5, 7, 8, 9};

    void Connect(IInputStream* stream) override {
        auto next = BeginConnect(stream);
        if (!next) return;
        char line[32] = {};
        next->Seek(0);
        ReadWhole(*next, line, sizeof(line) - 1);
        std::string text = line;
        if (!text.starts_with("misbehave ")) Raise<CDataFormatException>(kRefused);
        text = text.substr(10, text.find('\n') - 10);
        NoteContainer(VRL_L("Test"));
        if (text.starts_with("connect ")) Behave(text.substr(8));
        if (text == "refuse") {
            NoteValue(VRL_L("escape\x1B[31m"), 7);
            Raise<CDataFormatException>(kRefused);
        }
        if (text.starts_with("read ")) how_ = text.substr(5);
        if (text == "attempts") content_ = test::AttemptWhatIsForbidden();
        if (text == "channels") format_.channels = 0;
        stream_ = std::move(next);
    }
    const TDataFormat& GetFormat() override { return format_; }
    std::int64_t GetLength() override { return static_cast<std::int64_t>(content_.size()); }
    std::int64_t Tell() override { return position_; }
    void Seek(std::int64_t position) override { position_ = position; }
    bool Eof() override { return position_ >= GetLength(); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        Behave(how_);
        if (how_ == "fail") Raise<CIOException>(kUnreadable);
        const std::uint64_t count =
            std::min(size, static_cast<std::uint64_t>(std::max<std::int64_t>(GetLength() - position_, 0)));
        std::memcpy(buffer, content_.data() + position_, count);
        position_ += static_cast<std::int64_t>(count);
        return count;
    }
    using TLayer::Read;

private:
    TDataFormat_AudioPcm format_;
    std::string how_;
    std::string content_ = "samples";
    std::int64_t position_ = 0;
};

} // namespace

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl(
        {CMisbehavingDecoder::ClassId, VRL_L("test::CMisbehavingDecoder"), &NewObject<CMisbehavingDecoder>});
    v.GetCodecClassStore().RegisterDecoder(
        {CMisbehavingDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
    return true;
}

void VrlClosePlugin() {}
