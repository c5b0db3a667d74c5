// A program in the place of vorlund-plugin-scan that says to an application that isolates decoders what no
// good one says. The name of the first folder says what.
//   isolation_helper CHANNEL --decode MEGABYTES FOLDER
#include "Arguments.h"
#include "vorlund-plugin-scan/ScanSide.h"

#include "vorlund/api/isolation/IsolationProtocol.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

#include <chrono>
#include <thread>

namespace vorlund::test {
namespace {

using namespace isolation;

class CTalk {
public:
    explicit CTalk(const std::string& channel) : channel_(channel) {}

    void Say(CMessage& message) const {
        const auto bytes = message.Finish();
        if (!Send(channel_, bytes.data(), bytes.size())) EndNow();
    }
    void SayHeader(const THeader& header) const { Send(channel_, &header, sizeof(header)); }
    void SayBytes(std::size_t count) const {
        const std::string bytes(count, 'x');
        Send(channel_, bytes.data(), bytes.size());
    }
    /// A chain with that end.
    void SayFound(const TDataFormat& format, std::size_t size, std::int64_t length = 10,
                  std::uint32_t capabilities = 7) const {
        CMessage message(TKind::Found);
        message.Put(capabilities).Put(length).PutText(VRL_L("test::CFake"));
        Say(message.PutBytes(&format, size));
    }
    void Hear() const {
        THeader header;
        char byte;
        if (!Receive(channel_, &header, sizeof(header))) EndNow();
        for (std::uint32_t i = 0; i < header.size; ++i) Receive(channel_, &byte, 1);
    }
    void Question(std::int64_t position, std::uint32_t count) const {
        CMessage message(TKind::SourceRead);
        Say(message.Put(position).Put(count));
    }

private:
    const std::string channel_;
};

/// A picture or a video, most of them impossible.
void TalkOfImages(const CTalk& talk, const std::string& how) {
    const bool isVideo = how.starts_with("video");
    TDataFormat_VideoRgb video;
    TDataFormat_ImageRgb& image = video.image;
    image.width = image.height = 2;
    image.pixelFormat.bitsPerPixel = 24;
    if (how.ends_with("-flat")) image.height = 0;
    if (how.ends_with("-narrow")) image.width = 0;
    if (how.ends_with("-huge")) image.width = image.height = 0xFFFFFFFF;
    if (how.ends_with("-no-bits")) image.pixelFormat.bitsPerPixel = 0;
    if (how.ends_with("-many-bits")) image.pixelFormat.bitsPerPixel = 129;
    if (how.ends_with("-id")) image.id = CId::Null();
    if (how.ends_with("-size")) --image.size;
    if (isVideo)
        talk.SayFound(video, sizeof(video) - (how.ends_with("-cut") ? 4 : 0));
    else
        talk.SayFound(image, sizeof(image));
}

/// What is not wrong, only rare.
void TalkOddly(const CTalk& talk, const std::string& how) {
    if (how == "odd-entry") {
        CMessage entry(TKind::Entry);
        entry.Put(CId::Null()).PutText(VRL_L("a\x7F") VRL_L("b\x9B") VRL_L("c\xE9"));
        entry.Put(5000).Put(std::int32_t{99}).Put(std::int32_t{-1});
        for (int i = 0; i < 5; ++i) entry.PutText(VRL_L("x"));
        talk.Say(entry.Put(std::uint64_t{1}).Put(0.5));
        talk.SayHeader({kMark, TKind::NotFound, 0});
    }
    if (how == "odd-numbers") {
        // An outcome and a type on each side of those that there are.
        for (const std::int32_t number : {-1, 0, 1, 1000}) {
            CMessage entry(TKind::Entry);
            entry.Put(CId::Null()).PutText(VRL_L("test::CFake")).Put(0).Put(number).Put(number);
            for (int i = 0; i < 5; ++i) entry.PutText(VRL_L(""));
            talk.Say(entry.Put(std::uint64_t{1}).Put(0.5));
        }
        talk.SayHeader({kMark, TKind::NotFound, 0});
    }
    if (how == "odd-chain") {
        const TDataFormat_AudioPcm pcm;
        talk.SayFound(pcm, sizeof(pcm), -1, STREAM_CAPABILITY_READ);
        talk.Hear();
        CMessage some(TKind::Data);
        talk.Say(some.Put(std::int64_t{-1}).PutBytes("x", 1));
        talk.Hear();
        CMessage none(TKind::Data);
        talk.Say(none.Put(std::int64_t{-1}));
    }
    if (how == "odd-length") {
        const TDataFormat_AudioPcm pcm;
        talk.SayFound(pcm, sizeof(pcm), -1);
    }
}

void Talk(const CTalk& talk, const std::string& how) {
    talk.Hear();
    if (how.starts_with("image-") || how.starts_with("video-")) TalkOfImages(talk, how);
    if (how.starts_with("odd-")) TalkOddly(talk, how);
    if (how.starts_with("deaf")) {
        // Asks, and does not listen to the answers.
        for (int i = 0; how == "deaf" || i < 3; ++i) talk.Question(0, kMaxBlock);
    }
    TDataFormat_AudioPcm pcm;
    if (how == "garbage") talk.SayBytes(4096);
    if (how == "mark") talk.SayHeader({kMark + 1, TKind::NotFound, 0});
    if (how == "huge") talk.SayHeader({kMark, TKind::NotFound, kMaxMessage + 1});
    if (how == "cut") talk.SayHeader({kMark, TKind::Found, 100});
    if (how == "kind") talk.SayHeader({kMark, static_cast<TKind>(77), 0});
    if (how == "question") talk.SayHeader({kMark, TKind::Open, 0});
    if (how == "content") {
        talk.SayHeader({kMark, TKind::NotFound, 1});
        talk.SayBytes(1);
    }
    if (how == "short-entry") talk.SayHeader({kMark, TKind::Entry, 0});
    if (how == "long-text") {
        CMessage message(TKind::Trying);
        talk.Say(message.Put(CId::Null()).Put(kMaxText + 1).PutBytes(std::string(9000, 'x').data(), 9000));
    }
    if (how == "entries")
        for (;;) {
            CMessage message(TKind::Trying);
            talk.Say(message.Put(CId::Null()).PutText(VRL_L("test::CEndless")));
        }
    if (how == "negative") talk.Question(-1, 1);
    if (how == "much") talk.Question(0, kMaxBlock + 1);
    if (how == "short-question") {
        talk.SayHeader({kMark, TKind::SourceRead, 4});
        talk.SayBytes(4);
    }
    if (how == "other-format") talk.SayFound(TDataFormat_ImageRgb(), sizeof(TDataFormat_ImageRgb));
    if (how == "other-good-format") TalkOfImages(talk, "image-good");
    if (how == "long-format") {
        CMessage message(TKind::Found);
        const std::string bytes(5000, 'x');
        message.Put(std::uint32_t{7}).Put(std::int64_t{10}).PutText(VRL_L("test::CFake"));
        talk.Say(message.PutBytes(bytes.data(), bytes.size()));
    }
    if (how == "other-size") {
        // As long as the record says, which is not how long those of its kind are.
        pcm.size = sizeof(pcm) - 4;
        talk.SayFound(pcm, pcm.size);
    }
    if (how == "cut-format") talk.SayFound(pcm, sizeof(TDataFormat));
    if (how == "no-format") talk.SayFound(pcm, 0);
    if (how == "channels") {
        pcm.channels = 0;
        talk.SayFound(pcm, sizeof(pcm));
    }
    if (how == "many-channels") {
        pcm.channels = 0x40000000;
        talk.SayFound(pcm, sizeof(pcm));
    }
    if (how == "sample-format") {
        pcm.sampleFormat = 4;
        talk.SayFound(pcm, sizeof(pcm));
    }
    if (how == "rate") {
        pcm.samplesPerSec = 0;
        talk.SayFound(pcm, sizeof(pcm));
    }
    if (how == "length") talk.SayFound(pcm, sizeof(pcm), -2);
    if (how == "unsafe") talk.SayHeader({kMark, TKind::Unsafe, 0});
    if (how == "silent") std::this_thread::sleep_for(std::chrono::hours(1));
    if (how == "asking") {
        // Never the end, but always something to do.
        for (;;) {
            talk.Question(0, 1);
            talk.Hear();
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    // The rest is about the reading.
    if (how.starts_with("read-")) {
        talk.SayFound(pcm, sizeof(pcm));
        talk.Hear();
    }
    if (how == "read-much") {
        CMessage message(TKind::Data);
        const std::string bytes(kMaxBlock + 1, 'x');
        talk.Say(message.Put(std::int64_t{10}).PutBytes(bytes.data(), bytes.size()));
    }
    if (how == "read-length") {
        CMessage message(TKind::Data);
        talk.Say(message.Put(std::int64_t{-2}));
    }
    if (how == "read-kind") talk.SayHeader({kMark, TKind::NotFound, 0});
    if (how == "read-nothing") talk.SayHeader({kMark, TKind::Data, 0});
    if (how == "read-silent") std::this_thread::sleep_for(std::chrono::hours(1));
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = GetArguments(argc, argv);
    if (arguments.size() != 4) return 64;
    vorlund::test::Talk(vorlund::test::CTalk(arguments[0]), arguments[3]);
    return 0;
}
