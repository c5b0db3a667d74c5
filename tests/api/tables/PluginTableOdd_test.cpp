// Plug-ins with a table: formats of all kinds, rare answers, calls at the wrong time.
#include "api/tables/TablePluginTest.h"
#include "support/Outcome.h"

#include <vorlund/AudioInput.h>
#include <vorlund/AudioOutput.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/PluginTable.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const char* kImpossible = "Decoder made an impossible format";

/// Does something once as it is moved to another position.
class CTableMovedStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x1D7E5713, 0xA15D1C0A, 0x960B8F3E, 0x7AB1E012};

    std::function<void()> act;

    void Seek(std::int64_t newPosition) override {
        CMemoryInputStream::Seek(newPosition);
        if (newPosition > 0) {
            if (const auto once = std::exchange(act, nullptr)) once();
        }
    }
};

class PluginTableOdd : public CTablePluginTest {
protected:
    /// Why the decoder refuses the bytes; empty when it does not.
    static std::string Refusal(IInputStreamFilter& filter, const std::string& bytes) {
        try {
            filter.Connect(Bytes(bytes).Get());
            return {};
        } catch (const CDataFormatException& refusal) {
            return Narrow(refusal.GetReason());
        }
    }
    /// An input that tells the decoder to open with that format.
    static std::string Opening(const vorlund_plugin_format& format) {
        return "TF" + std::string(reinterpret_cast<const char*>(&format), sizeof format);
    }
    static std::string Refusal(const vorlund_plugin_format& format) {
        return Refusal(*Create(kTableDecoder), Opening(format));
    }
    static vorlund_plugin_format Audio() {
        vorlund_plugin_format format = {};
        format.audio = {VORLUND_PLUGIN_AUDIO_ID, sizeof format.audio, VORLUND_PLUGIN_SAMPLES_16, 2, 8000};
        return format;
    }
    static vorlund_plugin_image Image() {
        vorlund_plugin_image image = {};
        image.id = VORLUND_PLUGIN_IMAGE_ID;
        image.size = sizeof image;
        image.pixels.bits_per_pixel = 24;
        image.width = image.height = 2;
        return image;
    }
    static vorlund_plugin_video Video() {
        vorlund_plugin_video video = {};
        video.id = VORLUND_PLUGIN_VIDEO_ID;
        video.size = sizeof video;
        video.image = Image();
        video.frame_rate = 25;
        return video;
    }
    static void OpenAt(IAudioOutput& output, std::uint32_t rate) {
        output.OpenOutput({SAMPLE_FORMAT_16BIT, 2, rate}, 0.1);
    }
    static CRefPtr<IAudioOutput> NewOutput() { return CreateAs<IAudioOutput>(kTableOutput); }
};

TEST_F(PluginTableOdd, FormatsOfAudioAreLookedAt) {
    Load(0);
    EXPECT_EQ(Refusal(Audio()), "");
    const std::function<void(vorlund_plugin_audio&)> changes[] = {
        [](vorlund_plugin_audio& audio) { --audio.size; },
        [](vorlund_plugin_audio& audio) { audio.sample_format = 4; },
        [](vorlund_plugin_audio& audio) { audio.channels = 0; },
        [](vorlund_plugin_audio& audio) { audio.channels = 256; },
        [](vorlund_plugin_audio& audio) { audio.samples_per_sec = 0; },
    };
    for (const auto& change : changes) {
        vorlund_plugin_format format = Audio();
        change(format.audio);
        EXPECT_EQ(Refusal(format), kImpossible) << &change - changes;
    }
}

TEST_F(PluginTableOdd, FormatsOfImagesAreLookedAt) {
    Load(28);
    vorlund_plugin_format format = {};
    format.image = Image();
    EXPECT_EQ(Refusal(format), "");
    const std::function<void(vorlund_plugin_image&)> changes[] = {
        [](vorlund_plugin_image& image) { ++image.size; },
        [](vorlund_plugin_image& image) { image.pixels.bits_per_pixel = 0; },
        [](vorlund_plugin_image& image) { image.pixels.bits_per_pixel = 129; },
        [](vorlund_plugin_image& image) { image.width = 0; },
        [](vorlund_plugin_image& image) { image.height = 0; },
    };
    for (const auto& change : changes) {
        format.image = Image();
        change(format.image);
        EXPECT_EQ(Refusal(format), kImpossible) << &change - changes;
    }
}

TEST_F(PluginTableOdd, FormatsOfVideosAreLookedAt) {
    Load(29);
    vorlund_plugin_format format = {};
    format.video = Video();
    EXPECT_EQ(Refusal(format), "");
    format.video.frame_rate = 0;
    EXPECT_EQ(Refusal(format), "");
    const std::function<void(vorlund_plugin_video&)> changes[] = {
        [](vorlund_plugin_video& video) { ++video.size; },
        [](vorlund_plugin_video& video) { video.image.id.words[3] ^= 1; },
        [](vorlund_plugin_video& video) { video.image.height = 0; },
        [](vorlund_plugin_video& video) { video.frame_rate = std::numeric_limits<float>::infinity(); },
        [](vorlund_plugin_video& video) { video.frame_rate = -1; },
    };
    for (const auto& change : changes) {
        format.video = Video();
        change(format.video);
        EXPECT_EQ(Refusal(format), kImpossible) << &change - changes;
    }
}

TEST_F(PluginTableOdd, OfOtherFormatsTheSizeIsLookedAt) {
    Load(30);
    vorlund_plugin_format format = {};
    format.head.id = {{9, 9, 9, 9}};
    for (const std::uint32_t size : {20u, 100u, 256u}) {
        format.head.size = size;
        const auto filter = Create(kTableDecoder);
        EXPECT_EQ(Refusal(*filter, Opening(format)), "") << size;
        EXPECT_EQ(filter->GetFormat().size, size);
    }
    for (const std::uint32_t size : {0u, 19u, 257u}) {
        format.head.size = size;
        EXPECT_EQ(Refusal(format), kImpossible) << size;
    }
}

TEST_F(PluginTableOdd, WhoRecognisesIsAskedFirst) {
    Load(31);
    EXPECT_EQ(Refusal(*Create(kTableDecoder), "Xg"), "Data are of another kind");
    EXPECT_EQ(Refusal(*Create(kTableDecoder), "Tg"), "");
}

TEST_F(PluginTableOdd, InstancesMayBeThePluginsOwn) {
    Load(32);
    const auto decoded = Decode("Tg");
    TBytes bytes(10);
    EXPECT_EQ(decoded->Read(bytes.data(), 10), 10U);
    EXPECT_EQ(bytes, Ramp(10));
}

TEST_F(PluginTableOdd, TablesMayBeEmpty) {
    for (const int number : {33, 34}) {
        const TPluginReport report = Load(number, "empty" + std::to_string(number));
        EXPECT_EQ(Narrow(report.Explain()), "loaded");
        EXPECT_TRUE(report.items.empty());
    }
}

TEST_F(PluginTableOdd, WithoutTheLibraryNothingIsRegistered) {
    const fs::path path = folder_.Add("table_plugin");
    v.Close();
    // The last thing that it does fails, and all before that is taken back.
    EXPECT_THROW(store_.LoadPluginFile(ToVorlund(path).c_str()), CBugException);
    EXPECT_FALSE(IsInProcess(path));
    v.Init();
    EXPECT_EQ(Narrow(Load(0).Explain()), "loaded");
}

// Decoders.

TEST_F(PluginTableOdd, UnconnectedOneIsAnEmptyStream) {
    Load(0);
    const auto filter = Create(kTableDecoder);
    filter->Connect(nullptr);
    EXPECT_EQ(filter->GetCapabilities(), 0U);
    EXPECT_TRUE(filter->GetFormat().id == CId::Null());
    EXPECT_TRUE(filter->Eof());
    filter->Skip(5);
    std::uint8_t byte = 0;
    EXPECT_THROW(filter->Seek(1), COperationNotSupportedException);
    EXPECT_THROW(filter->Tell(), COperationNotSupportedException);
    EXPECT_THROW(filter->Read(&byte, 1), CException);
    filter->Connect(Bytes("Tg").Get());
    EXPECT_EQ(filter->Read(&byte, 0), 0U);
    EXPECT_EQ(filter->Tell(), 0);
}

TEST_F(PluginTableOdd, InputTellsWhatItIs) {
    Load(0);
    const auto filter = Create(kTableDecoder);
    const auto stream = Bytes("Tt");
    stream->format.Set(TDataFormat_AudioPcm(SAMPLE_FORMAT_8BIT, 1, 4000));
    filter->Connect(stream.Get());
    EXPECT_EQ(static_cast<const TDataFormat_AudioPcm&>(filter->GetFormat()).samplesPerSec, 4000U);
}

TEST_F(PluginTableOdd, InputWithoutPositionsAndWithALongFormatSaysSo) {
    Load(0);
    // One byte more than a plug-in has room for, and one less than a record has.
    for (const std::uint32_t size : {257U, 19U}) {
        const auto stream = Bytes("Tw");
        stream->capabilities = STREAM_CAPABILITY_READ;
        std::vector<std::uint32_t> record(80);
        auto& format = reinterpret_cast<TDataFormat&>(record[0]);
        format = TDataFormat_AudioPcm();
        format.size = size;
        class COddFormat : public CMemoryInputStream {
        public:
            const TDataFormat* odd = nullptr;
            const TDataFormat& GetFormat() override { return *odd; }
        };
        const auto odd = Make<COddFormat>();
        odd->bytes = stream->bytes;
        odd->capabilities = stream->capabilities;
        odd->odd = &format;
        const auto filter = Create(kTableDecoder);
        filter->Connect(odd.Get());
        EXPECT_EQ(filter->GetLength(), 1000);
        filter->Disconnect();
    }
}

TEST_F(PluginTableOdd, InputOfAnotherDecoderIsNotToBeUsed) {
    Load(0);
    const auto kept = Decode("Tk");
    EXPECT_TRUE(Decode("TK"));
}

TEST_F(PluginTableOdd, MemoryThatEndsInTheInputIsSaid) {
    Load(0);
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = {'T', 's', 1};
    const auto filter = Create(kTableDecoder);
    filter->Connect(stream.Get());
    stream->failAt = 0;
    stream->fail = [] { throw std::bad_alloc(); };
    std::uint8_t byte = 0;
    EXPECT_THROW(filter->Read(&byte, 1), std::bad_alloc);
    EXPECT_THROW(filter->Connect(stream.Get()), std::bad_alloc);
}

TEST_F(PluginTableOdd, SeeksThatFailComeWithTheNextRead) {
    Load(0);
    const auto decoded = Decode("Te");
    decoded->Seek(10);
    EXPECT_EQ(decoded->Tell(), 10);
    std::uint8_t byte = 0;
    for (int i = 0; i < 2; ++i) {
        try {
            decoded->Read(&byte, 1);
            ADD_FAILURE();
        } catch (const CIOException& failure) {
            EXPECT_EQ(Narrow(failure.GetReason()), "No way there");
        }
    }
    decoded->Skip(5);
    EXPECT_EQ(decoded->Tell(), 15);
}

TEST_F(PluginTableOdd, StreamMayDisconnectTheDecoderThatGoesToAPlace) {
    Load(0);
    const auto stream = Make<CTableMovedStream>();
    stream->bytes = {'T', 'v', 1, 2, 3, 4};
    const auto filter = Create(kTableDecoder);
    filter->Connect(stream.Get());
    filter->Seek(3);
    stream->act = [&] { filter->Disconnect(); };
    std::uint8_t byte = 0;
    EXPECT_EQ(filter->Read(&byte, 1), 0U);
    EXPECT_TRUE(filter->Eof());
}

/// A decoder that only goes forward, over bytes of its own format.
class PluginTableOddForward : public PluginTableOdd {
protected:
    ~PluginTableOddForward() noexcept override = default;
    PluginTableOddForward() {
        Load(0);
        filter_ = Create(kTableForward);
    }
    void Connect(const char* bytes) {
        stream_ = Bytes(bytes);
        stream_->format.Set(HeadOnly(kTableForwardSource));
        filter_->Connect(stream_.Get());
    }

    CRefPtr<CMemoryInputStream> stream_;
    CRefPtr<IInputStreamFilter> filter_;
};

TEST_F(PluginTableOddForward, SkippingEndsAtTheEnd) {
    Connect("Tg");
    filter_->Skip(5000);
    EXPECT_EQ(filter_->Tell(), 1000);
    EXPECT_TRUE(filter_->Eof());
    Connect("Tl");
    filter_->Skip(5000);
    EXPECT_EQ(filter_->Tell(), 1000);
    EXPECT_TRUE(filter_->Eof());
    std::uint8_t byte = 0;
    EXPECT_EQ(filter_->Read(&byte, 1), 0U);
}

TEST_F(PluginTableOddForward, AFailedReadIsTheLast) {
    Connect("Tf");
    std::uint8_t byte = 0;
    for (const char* const reason : {"Frame 3 is broken", "Decoder failed", "Decoder failed"}) {
        try {
            filter_->Read(&byte, 1);
            ADD_FAILURE();
        } catch (const CIOException& failure) {
            EXPECT_EQ(Narrow(failure.GetReason()), reason);
        }
    }
}

TEST_F(PluginTableOddForward, StreamMayDisconnectTheDecoderThatSkips) {
    class CDisconnecting : public CMemoryInputStream {
    public:
        std::function<void()> act;

        using CMemoryInputStream::Read;
        std::uint64_t Read(void* buffer, std::uint64_t size) override {
            if (act) act();
            return CMemoryInputStream::Read(buffer, size);
        }
    };
    const auto stream = Make<CDisconnecting>();
    stream->bytes.assign(9000, 'x');
    stream->bytes[0] = 'T';
    stream->bytes[1] = 's';
    stream->format.Set(HeadOnly(kTableForwardSource));
    filter_->Connect(stream.Get());
    stream->act = [this] { filter_->Disconnect(); };
    filter_->Skip(5000);
    EXPECT_TRUE(filter_->Eof());
}

// Devices.

TEST_F(PluginTableOdd, DevicesWithImpossibleFormatsAreClosed) {
    Load(0);
    const auto output = NewOutput();
    for (const std::uint32_t rate : {1237U, 1238U, 1239U}) {
        EXPECT_EQ(Outcome([&] { OpenAt(*output, rate); }),
                  "CFailedException vorlund::CTablePort::Open src/vorlund/api/tables/TablePort:22 Device "
                  "opened with an impossible format")
            << rate;
    }
    EXPECT_THROW(OpenAt(*output, 1240), std::bad_alloc);
    EXPECT_EQ(Outcome([&] { OpenAt(*output, 1241); }),
              "CFailedException vorlund::CTablePort::Open src/vorlund/api/tables/TablePort:21 Device does "
              "not open");
    EXPECT_EQ(
        Outcome([&] { OpenAt(*output, 1242); }),
        "CFailedException vorlund::CTablePort::Start src/vorlund/api/tables/TablePort:31 Device does not "
        "start");
    OpenAt(*output, 48000);
    EXPECT_GE(output->GetXruns(), 3U);
    output->Close();
}

TEST_F(PluginTableOdd, WhatADeviceTellsOfItsDelayIsBounded) {
    Load(0);
    const auto output = NewOutput();
    OpenAt(*output, 48000);
    std::int16_t frames[20] = {};
    output->Write(frames, sizeof frames);
    // The device says four thousand million frames, and nothing was heard yet.
    EXPECT_EQ(output->GetPosition(), 0U);
    EXPECT_LE(output->GetDelay(), 10U + 10 * 192000);
    output->Close();
}

TEST_F(PluginTableOdd, LostDevicesAreTold) {
    Load(0);
    const auto output = NewOutput();
    OpenAt(*output, 1243);
    EXPECT_EQ(output->GetState(), AUDIO_STATE_LOST);
    output->Close();
}

TEST_F(PluginTableOdd, DevicesThatOutliveThePluginDoNotCallIt) {
    Load(0);
    const auto output = NewOutput();
    const auto unopened = NewOutput();
    OpenAt(*output, 48000);
    store_.Close();
    EXPECT_LE(output->GetDelay(), 48000U);
    output->Close();
    EXPECT_EQ(
        Outcome([&] { OpenAt(*unopened, 48000); }),
        "CFailedException vorlund::CTablePort::Open src/vorlund/api/tables/TablePort:23 Plug-in is closed");
}

} // namespace
} // namespace vorlund::test
