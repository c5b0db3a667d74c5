// Inputs: what is read is what the device has heard.
#include "devices/audio/SteppedTest.h"

#include <vorlund/AudioPort.h>
#include <vorlund/StreamErrors.h>

#include <cerrno>
#include <functional>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioInput");
constexpr const wchar* kOpen = VRL_L("vorlund::CAudioInput::OpenInput");
constexpr TFailure kBadFormat{kOpen, kFile, 1, VRL_L("Unsupported audio format")};
constexpr TFailure kBadLatency{kOpen, kFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")};
constexpr TFailure kNoPort{VRL_L("vorlund::CreateAudioInput"), kFile, 13, VRL_L("port is NULL")};
constexpr const wchar* kStream = VRL_L("src/vorlund/devices/audio/CaptureStream");
constexpr TFailure kNoLength{VRL_L("vorlund::CCaptureStream::GetLength"), kStream, 1,
                             VRL_L("A recording has no length")};
constexpr TFailure kNoPositions{VRL_L("vorlund::CCaptureStream::Seek"), kStream, 2,
                                VRL_L("A recording has no positions")};

class AudioInput : public CSteppedTest {
protected:
    void SetInput(const TBytes& bytes, const wchar* device = VRL_L("a")) {
        audio_.SetInput(device, bytes.data(), bytes.size());
    }
    /// An input that follows the default device, opened, which will hear so many frames.
    CRefPtr<IAudioInput> OpenInput(std::size_t frames) {
        const auto input = CreateInput();
        sound_ = MakeSound(kSixteenBits, frames);
        SetInput(sound_);
        input->OpenInput(kSixteenBits, kDefaultAudioLatency);
        return input;
    }
    static CRefPtr<IInputStream> GetStream(const CRefPtr<IAudioInput>& input) {
        return CRefPtr<IInputStream>::Adopt(input->GetStream());
    }
    static TBytes Read(const CRefPtr<IInputStream>& stream, std::size_t size) {
        TBytes bytes(size);
        bytes.resize(static_cast<std::size_t>(stream->Read(bytes.data(), size)));
        return bytes;
    }

    TBytes sound_;
};

TEST_F(AudioInput, EachFormatIsReadAsItWasHeard) {
    const auto input = CreateInput();
    for (const TDataFormat_AudioPcm& format : kEachFormat) {
        const TBytes sound = MakeSound(format, 700);
        SetInput(sound);
        input->OpenInput(format, kDefaultAudioLatency);
        const auto stream = GetStream(input);
        const auto& given = static_cast<const TDataFormat_AudioPcm&>(stream->GetFormat());
        EXPECT_EQ(given.samplesPerSec, format.samplesPerSec);
        audio_.Step(100);
        input->Stop();
        EXPECT_EQ(input->GetState(), AUDIO_STATE_PAUSED);
        const std::uint64_t frames = input->GetPosition();
        EXPECT_EQ(input->GetReadable(), frames * format.GetBlockSize());
        const TBytes heard = Joined(sound, Silence(format, 10000));
        EXPECT_EQ(Read(stream, 1 << 20),
                  Part(heard, 0, static_cast<std::size_t>(frames) * format.GetBlockSize()));
        EXPECT_TRUE(stream->Eof());
        EXPECT_EQ(GetReadError(*stream), 0u);
        EXPECT_EQ(stream->Tell(), static_cast<std::int64_t>(frames * format.GetBlockSize()));
        EXPECT_EQ(input->GetXruns(), 0u);
    }
}

TEST_F(AudioInput, ReadWaitsUntilTheBufferIsFull) {
    const auto input = OpenInput(3000);
    const auto stream = GetStream(input);
    EXPECT_EQ(GetStream(input).Get(), stream.Get());
    EXPECT_EQ(stream->GetCapabilities(), STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ);
    CActor reader;
    TBytes first, second;
    reader.Start([&] { first = Read(stream, 1001); });
    audio_.Step(250);
    EXPECT_TRUE(reader.StaysBusy());
    EXPECT_FALSE(stream->Eof());
    audio_.Step(1);
    EXPECT_TRUE(reader.Finishes());
    EXPECT_EQ(first, Part(sound_, 0, 1001));
    reader.Start([&] { second = Read(stream, 10000); });
    audio_.Step(49);
    input->Close();
    EXPECT_TRUE(reader.Finishes());
    EXPECT_EQ(second, Part(sound_, 1001, 1200));
    EXPECT_TRUE(Read(stream, 10).empty());
}

TEST_F(AudioInput, PausedFramesAreDropped) {
    const auto input = OpenInput(3000);
    audio_.Step(200);
    input->SetPaused(true);
    EXPECT_EQ(input->GetState(), AUDIO_STATE_PAUSED);
    audio_.Step(300);
    input->SetPaused(false);
    audio_.Step(100);
    EXPECT_EQ(input->GetPosition(), 300u);
    EXPECT_EQ(Read(GetStream(input), 1200), Joined(Part(sound_, 0, 800), Part(sound_, 2000, 2400)));
    EXPECT_EQ(input->GetXruns(), 0u);
}

TEST_F(AudioInput, AReaderMayBeASecondLate) {
    const auto input = OpenInput(480000);
    const auto stream = GetStream(input);
    audio_.Step(48000);
    EXPECT_EQ(input->GetXruns(), 0u);
    EXPECT_EQ(Read(stream, 48000 * 4), Part(sound_, 0, 48000 * 4));
    audio_.Step(200000);
    EXPECT_EQ(input->GetXruns(), 1u);
    const std::uint64_t kept = input->GetReadable();
    EXPECT_GE(kept, 48000u * 4);
    EXPECT_EQ(Read(stream, static_cast<std::size_t>(kept)),
              Part(sound_, 48000 * 4, 48000 * 4 + static_cast<std::size_t>(kept)));
    audio_.Step(100);
    EXPECT_EQ(Read(stream, 400), Part(sound_, 248000 * 4, 248100 * 4));
    EXPECT_EQ(input->GetXruns(), 1u);
}

TEST_F(AudioInput, OtherSamplesAndChannelsAreConverted) {
    audio_.SetDeviceFormat(VRL_L("a"), {SAMPLE_FORMAT_16BIT, 1, 48000});
    const std::int16_t heard[] = {16384, -32768, 8};
    audio_.SetInput(VRL_L("a"), heard, sizeof(heard));
    const auto input = CreateInput();
    input->Open();
    EXPECT_EQ(input->GetDeviceFormat().channels, 1u);
    audio_.Step(3);
    float read[6];
    EXPECT_EQ(GetStream(input)->Read(read, sizeof(read)), sizeof(read));
    const float expected[] = {0.5F, 0.5F, -1.0F, -1.0F, 0x1p-12F, 0x1p-12F};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(read[i], expected[i]) << i;
    EXPECT_EQ(input->GetLatency(), 512 / 48000.0);
}

TEST_F(AudioInput, ALossIsToldFromAnEnd) {
    const auto input = CreateInput(VRL_L("a"));
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    SetInput(sound);
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    const auto stream = GetStream(input);
    audio_.LoseAt(100, VRL_L("a"));
    audio_.Step(200);
    EXPECT_EQ(input->GetState(), AUDIO_STATE_LOST);
    EXPECT_EQ(GetReadError(*stream), 0u);
    EXPECT_EQ(Read(stream, 4000), Part(sound, 0, 400));
    EXPECT_EQ(GetReadError(*stream), static_cast<std::uint32_t>(ENODEV));
}

TEST_F(AudioInput, AStopWhileThereIsNoDeviceIsTheEnd) {
    const auto input = OpenInput(1000);
    const auto stream = GetStream(input);
    audio_.Step(100);
    audio_.LoseAt(0, VRL_L("b"));
    audio_.LoseAt(0, VRL_L("a"));
    EXPECT_EQ(input->GetState(), AUDIO_STATE_LOST);
    input->Stop();
    audio_.Step(100);
    // Nobody opens it again.
    audio_.ReturnAt(0, VRL_L("a"));
    audio_.Step(100);
    EXPECT_EQ(input->GetPosition(), 100u);
    EXPECT_EQ(Read(stream, 1 << 20), Part(sound_, 0, 400));
    EXPECT_TRUE(stream->Eof());
}

TEST_F(AudioInput, InputsFollowTheDefault) {
    const auto input = CreateInput();
    const TBytes sound = MakeSound(kSixteenBits, 1000);
    const TBytes other = MakeSound(kSixteenBits, 1000, 2);
    SetInput(sound);
    SetInput(other, VRL_L("b"));
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    audio_.SetDefaultAt(100, VRL_L("b"));
    audio_.Step(300);
    EXPECT_EQ(input->GetState(), AUDIO_STATE_RUNNING);
    EXPECT_EQ(Read(GetStream(input), 1200), Joined(Part(sound, 0, 400), Part(other, 0, 800)));
}

TEST_F(AudioInput, ALoopbackHearsWhatIsPlayed) {
    const auto output = CreateOutput();
    const auto input = CreateInput(VRL_L("a.loopback"));
    input->OpenInput(kSixteenBits, kDefaultAudioLatency);
    audio_.Step(50);
    output->OpenOutput(kSixteenBits, kDefaultAudioLatency);
    const TBytes sound = MakeSound(kSixteenBits, 300);
    output->Write(sound.data(), sound.size());
    audio_.Step(350);
    EXPECT_EQ(Read(GetStream(input), 1600),
              Joined(Joined(Silence(kSixteenBits, 50), sound), Silence(kSixteenBits, 50)));
}

TEST_F(AudioInput, TheNullInputHearsSilence) {
    const auto input = CRefPtr<IAudioInput>::Adopt(CreateNullAudioInput());
    const TDataFormat_AudioPcm format(SAMPLE_FORMAT_8BIT, 1, 48000);
    input->OpenInput(format, 0.01);
    EXPECT_EQ(Read(GetStream(input), 1000), TBytes(1000, 128));
    input->Close();
    EXPECT_EQ(input->GetState(), AUDIO_STATE_CLOSED);
}

TEST_F(AudioInput, RefusesWhatCannotBe) {
    const auto input = CreateInput();
    ExpectRaises<CDataFormatException>(kBadFormat, [&] { input->OpenInput({1, 0, 48000}, 0.1); });
    ExpectRaises<CInvalidParameterException>(kBadLatency, [&] { input->OpenInput(kSixteenBits, 11); });
    ExpectRaises<CNullPtrException>(kNoPort, [] { CreateAudioInput(nullptr); });
    const auto expect = [&](const wchar* method, int line, const std::function<void()>& act) {
        ExpectRaises<CInvalidStateException>({method, kFile, line, VRL_L("Device is not open")}, act);
    };
    expect(VRL_L("vorlund::CAudioInput::GetStream"), 6, [&] { input->GetStream(); });
    expect(VRL_L("vorlund::CAudioInput::GetReadable"), 7, [&] { input->GetReadable(); });
    expect(VRL_L("vorlund::CAudioInput::SetPaused"), 8, [&] { input->SetPaused(true); });
    expect(VRL_L("vorlund::CAudioInput::Stop"), 9, [&] { input->Stop(); });
    expect(VRL_L("vorlund::CAudioInput::GetPosition"), 10, [&] { input->GetPosition(); });
    expect(VRL_L("vorlund::CAudioInput::GetDeviceFormat"), 11, [&] { input->GetDeviceFormat(); });
    expect(VRL_L("vorlund::CAudioInput::GetLatency"), 12, [&] { input->GetLatency(); });
    input->Open();
    const auto stream = GetStream(input);
    ExpectRaises<COperationNotSupportedException>(kNoLength, [&] { stream->GetLength(); });
    ExpectRaises<COperationNotSupportedException>(kNoPositions, [&] { stream->Seek(0); });
    EXPECT_THROW(stream->Read(nullptr, 4), CNullPtrException);
}

} // namespace
} // namespace vorlund::test
