// Every filter survives every call on itself from the stream below it, at every moment of every operation.
#include "data/filters/PcmConverterSource.h"
#include "data/filters/ReentrantScene.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/BufferedStream.h>
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace vorlund::test {
namespace {

using TInputScene = CReentrantScene<IInputStreamFilter, CReentrantInput>;
using TOutputScene = CReentrantScene<IOutputStreamFilter, CReentrantOutput>;

/// A call that the test makes on the filter, and that a stream makes from inside another.
template <class TScene> struct TCall {
    std::string name;
    typename TScene::TAct act;
};
template <class TScene> using TCalls = std::vector<TCall<TScene>>;

/// Reads into a buffer that ends in bytes which nobody may touch.
void ReadGuarded(IInputStream& stream, std::size_t size) {
    constexpr std::size_t kGuard = 8192;
    constexpr std::uint8_t kUntouched = 0x5C;
    TBytes buffer(size + kGuard, kUntouched);
    EXPECT_LE(stream.Read(buffer.data(), size), size);
    EXPECT_EQ(std::count(buffer.begin() + static_cast<std::ptrdiff_t>(size), buffer.end(), kUntouched),
              static_cast<std::ptrdiff_t>(kGuard));
}

/// The same by `ReadFrames`.
void ReadFramesGuarded(IInputStream& stream, std::size_t size) {
    constexpr std::uint8_t kUntouched = 0x5C;
    TBytes buffer(size + 8192, kUntouched);
    EXPECT_LE(ReadFrames(stream, buffer.data(), size), size);
    EXPECT_EQ(std::count(buffer.begin() + static_cast<std::ptrdiff_t>(size), buffer.end(), kUntouched), 8192);
}

/// What every filter can be asked, whichever way its data go.
template <class TScene> TCalls<TScene> CommonCalls() {
    return {
        {"Connect", [](TScene& scene) { scene.filter->Connect(&scene.stream); }},
        {"Connect other", [](TScene& scene) { scene.filter->Connect(&scene.other); }},
        {"Connect null", [](TScene& scene) { scene.filter->Connect(nullptr); }},
        {"Disconnect", [](TScene& scene) { scene.filter->Disconnect(); }},
        {"Disconnect and Connect other",
         [](TScene& scene) {
             scene.filter->Disconnect();
             if (scene.filter) scene.filter->Connect(&scene.other);
         }},
        {"Close", [](TScene& scene) { scene.filter->Close(); }},
        {"GetCapabilities", [](TScene& scene) { scene.filter->GetCapabilities(); }},
        {"GetLength", [](TScene& scene) { scene.filter->GetLength(); }},
        {"Flush", [](TScene& scene) { scene.filter->Flush(); }},
        {"Seek 0", [](TScene& scene) { scene.filter->Seek(0); }},
        {"Seek far", [](TScene& scene) { scene.filter->Seek(1'000'000); }},
        {"Tell", [](TScene& scene) { scene.filter->Tell(); }},
        {"AddRef and Release",
         [](TScene& scene) {
             scene.filter->AddRef();
             scene.filter->Release();
         }},
        {"QueryInterface",
         [](TScene& scene) {
             if (IObject* const same = scene.filter->QueryInterface(IObject::InterfaceId)) same->Release();
         }},
        {"GetClassId", [](TScene& scene) { scene.filter->GetClassId(); }},
        {"Release", [](TScene& scene) { scene.GiveUp(); }},
    };
}

TCalls<TInputScene> InputCalls() {
    TCalls<TInputScene> calls = CommonCalls<TInputScene>();
    const TCalls<TInputScene> more = {
        {"Eof", [](TInputScene& scene) { scene.filter->Eof(); }},
        {"GetFormat", [](TInputScene& scene) { scene.filter->GetFormat(); }},
        {"Read 4", [](TInputScene& scene) { ReadGuarded(*scene.filter, 4); }},
        {"Read 600", [](TInputScene& scene) { ReadGuarded(*scene.filter, 600); }},
        {"ReadFrames 4", [](TInputScene& scene) { ReadFramesGuarded(*scene.filter, 4); }},
        {"ReadFrames 600", [](TInputScene& scene) { ReadFramesGuarded(*scene.filter, 600); }},
        {"Skip", [](TInputScene& scene) { scene.filter->Skip(4); }},
        {"GetInputStream",
         [](TInputScene& scene) {
             if (IInputStream* const stream = scene.filter->GetInputStream()) stream->Release();
         }},
    };
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

TCalls<TOutputScene> OutputCalls() {
    TCalls<TOutputScene> calls = CommonCalls<TOutputScene>();
    const TCalls<TOutputScene> more = {
        {"SetFormat", [](TOutputScene& scene) { scene.filter->SetFormat(&GetEmptyFormat()); }},
        {"Write", [](TOutputScene& scene) { scene.filter->Write("12345678", 8); }},
        {"GetOutputStream",
         [](TOutputScene& scene) {
             if (IOutputStream* const stream = scene.filter->GetOutputStream()) stream->Release();
         }},
    };
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

/// The filter of the scene as what it is besides.
template <class TInterface> TInterface& As(TInputScene& scene) {
    return static_cast<TInterface&>(*scene.filter);
}

const TCalls<TInputScene> kNoCalls;
const TCalls<TInputScene> kChunkCalls = {
    {"SelectChunk data", [](TInputScene& scene) { As<IWavChunkDecoder>(scene).SelectChunk(VRL_L("data")); }},
    {"SelectChunk none", [](TInputScene& scene) { As<IWavChunkDecoder>(scene).SelectChunk(nullptr); }},
    {"SelectChunk unknown", [](TInputScene& scene) { As<IWavChunkDecoder>(scene).SelectChunk(VRL_L("?")); }},
    {"EnumerateChunks", [](TInputScene& scene) { As<IWavChunkDecoder>(scene).EnumerateChunks()->Release(); }},
    {"GetChunkSize",
     [](TInputScene& scene) {
         As<IWavChunkDecoder>(scene).GetChunkSize();
         As<IWavChunkDecoder>(scene).GetChunkOffset();
     }},
};
const TCalls<TInputScene> kSetFormatCalls = {
    {"SetFormat",
     [](TInputScene& scene) {
         const TDataFormat_AudioPcm format;
         As<ISetFormatIsf>(scene).SetFormat(&format);
     }},
    {"SetFormat null", [](TInputScene& scene) { As<ISetFormatIsf>(scene).SetFormat(nullptr); }},
};
const TCalls<TInputScene> kSampleFormatCalls = {
    {"SetSampleFormat",
     [](TInputScene& scene) {
         As<IAudioPcmSampleFormatConverter>(scene).SetSampleFormat(SAMPLE_FORMAT_FLOAT);
     }},
    {"SetSampleFormat and Connect other",
     [](TInputScene& scene) {
         As<IAudioPcmSampleFormatConverter>(scene).SetSampleFormat(SAMPLE_FORMAT_FLOAT);
         scene.filter->Connect(&scene.other);
     }},
};
const TCalls<TInputScene> kChannelCalls = {
    {"SetNumChannels 1",
     [](TInputScene& scene) { As<IAudioPcmChannelNumberConverter>(scene).SetNumChannels(1); }},
    {"SetNumChannels 6",
     [](TInputScene& scene) { As<IAudioPcmChannelNumberConverter>(scene).SetNumChannels(6); }},
    {"SetNumChannels and Connect other",
     [](TInputScene& scene) {
         As<IAudioPcmChannelNumberConverter>(scene).SetNumChannels(6);
         scene.filter->Connect(&scene.other);
     }},
};

/// One kind of filter, and one kind of data below it.
struct TFilterRow {
    const char* name;
    CId classId;
    CId interfaceId;
    TBytes bytes;
    TBytes otherBytes;
    TDataFormat_AudioPcm format;
    TDataFormat_AudioPcm otherFormat;
    const TCalls<TInputScene>* ownCalls;
    /// Brings the filter to a state in which it has something to do.
    void (*prepare)(TInputScene& scene) = [](TInputScene&) {};
    /// Makes what no class store makes.
    IInputStreamFilter* (*make)() = nullptr;
};

TBytes Wav(std::uint16_t bits) {
    return CWavBuilder()
        .Chunk("LIST", Ramp(6))
        .Format({.channels = 2, .bits = bits})
        .Chunk("data", Ramp(700))
        .Build();
}

std::vector<TFilterRow> FilterRows() {
    const TDataFormat_AudioPcm wide{SAMPLE_FORMAT_32BIT, 2, 44100};
    const TDataFormat_AudioPcm narrow{SAMPLE_FORMAT_8BIT, 1, 44100};
    const auto toBytes = [](TInputScene& scene) {
        As<IAudioPcmSampleFormatConverter>(scene).SetSampleFormat(SAMPLE_FORMAT_8BIT);
        scene.filter->Connect(&scene.stream);
    };
    const auto toMono = [](TInputScene& scene) {
        As<IAudioPcmChannelNumberConverter>(scene).SetNumChannels(1);
        scene.filter->Connect(&scene.stream);
    };
    const auto toData = [](TInputScene& scene) { As<IWavChunkDecoder>(scene).SelectChunk(VRL_L("data")); };
    return {
        {"CInputStreamFilter", classid::CInputStreamFilter, IInputStreamFilter::InterfaceId, Ramp(700),
         Ramp(9), wide, narrow, &kNoCalls},
        {"CSetFormatIsf", classid::CSetFormatIsf, ISetFormatIsf::InterfaceId, Ramp(700), Ramp(9), wide,
         narrow, &kSetFormatCalls},
        {"CWavChunkDecoder", classid::CWavChunkDecoder, IWavChunkDecoder::InterfaceId, Wav(16), Wav(8), wide,
         narrow, &kChunkCalls, toData},
        {"CWavDecoder", classid::CWavDecoder, IWavDecoder::InterfaceId, Wav(16), Wav(8), wide, narrow,
         &kNoCalls},
        {"CAudioPcmSampleFormatConverter", classid::CAudioPcmSampleFormatConverter,
         IAudioPcmSampleFormatConverter::InterfaceId, Ramp(2400), Ramp(2400), wide, narrow,
         &kSampleFormatCalls, toBytes},
        {"CAudioPcmChannelNumberConverter", classid::CAudioPcmChannelNumberConverter,
         IAudioPcmChannelNumberConverter::InterfaceId, Ramp(2400), Ramp(2400), wide, narrow, &kChannelCalls,
         toMono},
    };
}

/// The same converters over a file, with a decoder of the codec store's in between.
std::vector<TFilterRow> FileRows() {
    std::vector<TFilterRow> rows = FilterRows();
    rows.erase(rows.begin(), rows.begin() + 4);
    for (TFilterRow& row : rows) {
        row.bytes = Wav(16);
        row.otherBytes = Wav(8);
    }
    return rows;
}

/// Connects and reads anew, without surprises.
void ExpectUsable(TInputScene& scene) {
    scene.stream.position = 0;
    scene.filter->Connect(&scene.stream);
    if (IObject* const chunks = scene.filter->QueryInterface(IWavChunkDecoder::InterfaceId)) {
        chunks->Release();
        As<IWavChunkDecoder>(scene).SelectChunk(VRL_L("data"));
    }
    TBytes buffer(64);
    EXPECT_GT(scene.filter->Read(buffer.data(), buffer.size()), 0u);
    scene.filter->Disconnect();
}
void ExpectUsable(TOutputScene& scene) {
    // What it has collected comes first.
    scene.filter->Disconnect();
    const std::size_t before = scene.stream.bytes.size();
    scene.filter->Connect(&scene.stream);
    scene.filter->Write("1234", 4);
    scene.filter->Disconnect();
    EXPECT_EQ(scene.stream.bytes.size(), before + 4);
}

template <class TScene, class TMake>
bool RunOnce(int moment, const TCall<TScene>& outer, const TCall<TScene>& inner, const TMake& make) {
    SCOPED_TRACE(inner.name + " in " + outer.name + ", moment " + std::to_string(moment));
    const auto scene = make(moment, inner.act);
    scene->reentry.Start();
    try {
        outer.act(*scene);
    } catch (const CException&) {
    }
    scene->reentry.Stop();
    const bool hasActed = scene->reentry.HasActed();
    if (scene->filter) {
        ExpectUsable(*scene);
        scene->GiveUp();
    }
    EXPECT_EQ(scene->stream.references, 1);
    EXPECT_EQ(scene->other.references, 1);
    return hasActed;
}

/// Every call of `calls` inside every other one, at every single moment and then at all of them. `make` gives
/// a scene whose filter is connected. The result is the number of single moments that there were.
template <class TScene, class TMake> int RunAll(const TCalls<TScene>& calls, const TMake& make) {
    int moments = 0;
    for (const TCall<TScene>& outer : calls) {
        for (const TCall<TScene>& inner : calls) {
            int moment = 0;
            while (RunOnce(moment, outer, inner, make)) ++moment;
            RunOnce(CReentry::kEvery, outer, inner, make);
            moments += moment;
        }
    }
    return moments;
}

int RunRow(const TFilterRow& row) {
    SCOPED_TRACE(row.name);
    TCalls<TInputScene> calls = InputCalls();
    calls.insert(calls.end(), row.ownCalls->begin(), row.ownCalls->end());
    return RunAll(calls, [&](int moment, const TInputScene::TAct& act) {
        auto filter = CRefPtr<IInputStreamFilter>::Adopt(
            row.make ? row.make()
                     : static_cast<IInputStreamFilter*>(
                           CreateAs<IObject>(row.classId)->QueryInterface(row.interfaceId)));
        auto scene = std::make_unique<TInputScene>(std::move(filter), moment, act);
        scene->stream.bytes = row.bytes;
        scene->stream.format.Set(row.format);
        scene->other.bytes = row.otherBytes;
        scene->other.format.Set(row.otherFormat);
        if (row.bytes[0] == 'R') {
            scene->stream.format.Set(GetEmptyFormat());
            scene->other.format.Set(GetEmptyFormat());
        }
        scene->filter->Connect(&scene->stream);
        row.prepare(*scene);
        return scene;
    });
}

/// Every filter has at least so many moments.
constexpr int kFewMoments = 500;

TEST(FilterReentrancy, InputFilters) {
    const CLibraryScope library;
    for (const TFilterRow& row : FilterRows()) EXPECT_GT(RunRow(row), kFewMoments);
}

TEST(FilterReentrancy, ConvertersOverFiles) {
    const CLibraryScope library;
    for (const TFilterRow& row : FileRows()) EXPECT_GT(RunRow(row), kFewMoments);
}

TEST(FilterReentrancy, BufferedInput) {
    const CLibraryScope library;
    TFilterRow row{"CreateBufferedInput", {}, {}, Ramp(700), Ramp(9), {}, {}, &kNoCalls};
    row.make = [] { return CreateBufferedInput(32); };
    EXPECT_GT(RunRow(row), kFewMoments);
    // With bytes ahead.
    row.prepare = [](TInputScene& scene) { ReadGuarded(*scene.filter, 2); };
    EXPECT_GT(RunRow(row), kFewMoments);
}

/// Of an output filter to which `first` has been written.
template <class TMake> int RunOutput(TMake makeFilter, std::string_view first) {
    return RunAll(OutputCalls(), [&](int moment, const TOutputScene::TAct& act) {
        auto scene = std::make_unique<TOutputScene>(makeFilter(), moment, act);
        scene->filter->Connect(&scene->stream);
        if (!first.empty()) scene->filter->Write(first.data(), first.size());
        return scene;
    });
}

TEST(FilterReentrancy, OutputFilters) {
    const CLibraryScope library;
    const auto make = [] { return CreateAs<IOutputStreamFilter>(classid::COutputStreamFilter); };
    EXPECT_GT(RunOutput(make, ""), kFewMoments);
}

TEST(FilterReentrancy, BufferedOutput) {
    const CLibraryScope library;
    const auto make = [] { return CRefPtr<IOutputStreamFilter>::Adopt(CreateBufferedOutput(16)); };
    EXPECT_GT(RunOutput(make, "123"), kFewMoments);
    // A further write fills the block and leaves a rest.
    EXPECT_GT(RunOutput(make, "123456789012"), kFewMoments);
}

// The search for a decoder.

constexpr CId kCaughtDecoder{0x7E57CA06, 0x5B1C4F2E, 0x91D3A7B6, 0x0E8842F1};

/// The scene whose filter the next decoder becomes, until its end.
TInputScene* catchingScene = nullptr;
CTestListener forgetDecoder([](IObject*) { catchingScene->filter = nullptr; });

/// A WAV decoder that its stream knows from the beginning, while only the search holds it.
IObject* CreateCaughtDecoder() {
    auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    decoder->AddListener(&forgetDecoder);
    catchingScene->filter = decoder.Get();
    return decoder.Detach();
}

/// What the streams of `DecodeStream` do: they use the decoder and the store.
TCalls<TInputScene> SearchCalls(const CCodecClassStore& store) {
    TCalls<TInputScene> calls = InputCalls();
    std::erase_if(calls, [](const TCall<TInputScene>& call) { return call.name == "Release"; });
    calls.push_back({"DecodeStream", [&store](TInputScene& scene) {
                         // The inner decoder takes the place of the outer one until it ends.
                         CRefPtr<IInputStream>::Adopt(
                             store.DecodeStream(&scene.other, TDataFormat_AudioPcm::FormatId));
                     }});
    return calls;
}

TEST(FilterReentrancy, DecodeStream) {
    const CLibraryScope library;
    v.GetClassStore().RegisterClassVrl(
        {kCaughtDecoder, VRL_L("test::CreateCaughtDecoder"), &CreateCaughtDecoder});
    CCodecClassStore store;
    store.Init();
    store.RegisterDecoder({kCaughtDecoder, CId::Null(), TDataFormat_AudioPcm::FormatId});
    int moments = 0;
    for (const CId& wanted : {TDataFormat_AudioPcm::FormatId, CId::Null()}) {
        for (const TCall<TInputScene>& call : SearchCalls(store)) {
            bool hasActed = true;
            for (int moment = CReentry::kEvery; hasActed; ++moment) {
                SCOPED_TRACE(call.name + ", moment " + std::to_string(moment));
                TInputScene scene({}, moment, call.act);
                scene.stream.bytes = Wav(16);
                scene.other.bytes = Wav(8);
                catchingScene = &scene;
                scene.reentry.Start();
                try {
                    const auto decoded =
                        CRefPtr<IInputStream>::Adopt(store.DecodeStream(&scene.stream, wanted));
                    ReadGuarded(*decoded, 100);
                } catch (const CException&) {
                }
                scene.reentry.Stop();
                EXPECT_EQ(scene.filter, nullptr);
                EXPECT_EQ(scene.stream.references, 1);
                EXPECT_EQ(scene.other.references, 1);
                hasActed = scene.reentry.HasActed();
                ++moments;
            }
        }
    }
    store.Close();
    EXPECT_GT(moments, kFewMoments);
}

} // namespace
} // namespace vorlund::test
