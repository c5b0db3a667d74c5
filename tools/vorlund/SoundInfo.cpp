#include "SoundInfo.h"

#include "BriefInput.h"
#include "Decoding.h"
#include "Diagnostics.h"
#include "FileNames.h"
#include "Interrupt.h"
#include "Metering.h"
#include "OutputFile.h"
#include "Peaks.h"
#include "Progress.h"
#include "SoundPicture.h"
#include "SoundReader.h"

#include <vorlund/AudioMeter.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

using namespace vorlund;

namespace {

wstring Widened(const std::string& text) {
    return PathFromUtf8(text.c_str());
}

constexpr std::uint16_t kPcm = 1;

/// The usual endings of names; the first that fits a container.
struct TEnding {
    std::string_view ending;
    const wchar* container;
};
constexpr TEnding kEndings[] = {
    {"wav", VRL_L("WAV")},        {"wave", VRL_L("WAV")},       {"bwf", VRL_L("WAV")},
    {"wav", VRL_L("WAV (RIFX)")}, {"wav", VRL_L("RF64")},       {"rf64", VRL_L("RF64")},
    {"wav", VRL_L("BW64")},       {"bw64", VRL_L("BW64")},      {"w64", VRL_L("Wave64")},
    {"aif", VRL_L("AIFF")},       {"aiff", VRL_L("AIFF")},      {"aif", VRL_L("AIFF-C")},
    {"aiff", VRL_L("AIFF-C")},    {"aifc", VRL_L("AIFF-C")},    {"au", VRL_L("AU")},
    {"snd", VRL_L("AU")},         {"caf", VRL_L("CAF")},        {"flac", VRL_L("FLAC")},
    {"ogg", VRL_L("Ogg")},        {"oga", VRL_L("Ogg")},        {"opus", VRL_L("Ogg")},
    {"ogg", VRL_L("Ogg Vorbis")}, {"oga", VRL_L("Ogg Vorbis")}, {"ogg", VRL_L("Ogg Opus")},
    {"opus", VRL_L("Ogg Opus")},  {"oga", VRL_L("Ogg FLAC")},   {"ogg", VRL_L("Ogg FLAC")},
    {"mp3", VRL_L("MP3")},        {"m4a", VRL_L("M4A")},        {"m4a", VRL_L("MP4")},
    {"mp4", VRL_L("MP4")},        {"m4b", VRL_L("M4A")},        {"aac", VRL_L("AAC")},
    {"png", VRL_L("PNG")},        {"jpg", VRL_L("JPEG")},       {"jpeg", VRL_L("JPEG")},
    {"y4m", VRL_L("YUV4MPEG2")},
};

/// Tells when the name ends as that of files of another kind. Other endings mean nothing.
void CheckEnding(const std::string& name, TMediaInfo& info) {
    const std::string ending = GetEnding(name);
    if (ending.empty() || info.container.empty()) return;
    bool isOther = false;
    for (const TEnding& row : kEndings) {
        if (row.ending != ending) continue;
        if (info.container == row.container) return;
        isOther = true;
    }
    if (isOther)
        info.warnings.push_back(VRL_L("The name ends in '.") + Widened(ending) +
                                VRL_L("', and the file is ") + info.container);
}

void CollectRiff(IInputStream& stream, TMediaInfo& info) {
    info.riff = ReadRiffTable(stream);
    if (!info.riff) return;
    for (const std::string& warning : info.riff->warnings) info.warnings.push_back(Widened(warning));
}

/// What the decoders have remarked, and the container.
void CollectNotes(const CDecodeReport& report, TMediaInfo& info) {
    for (const TDecodeEntry& entry : report.GetEntries()) {
        if (entry.outcome != DECODE_CONNECTED) continue;
        if (entry.container.Length() > 0) info.container = entry.container.GetBuffer();
        if (entry.remarks.Length() > 0) info.warnings.push_back(entry.remarks.GetBuffer());
    }
    if (info.container.empty()) info.container = report.GetContainer().GetBuffer();
    const TDecodeEntry* const furthest = report.GetFurthest();
    if (info.container.empty() && furthest) info.container = furthest->container.GetBuffer();
}

/// What a WAV file says about itself, whichever decoder reads its sound.
void CollectMetadata(IInputStream& stream, TMediaInfo& info) {
    if (!info.riff || !info.riff->HasWavMetadata()) return;
    stream.Seek(0);
    TWavMetadata metadata = ReadWavMetadata(&stream);
    info.tags = GetWavTexts(metadata);
    info.cues = std::move(metadata.cues);
}

/// Decodes what the file has, as the first of these that it has.
CRefPtr<IInputStream> Decode(const CInputStreamSelector& source, TMediaInfo& info) {
    for (const CId& format :
         {TDataFormat_AudioPcm::FormatId, TDataFormat_VideoRgb::FormatId, TDataFormat_ImageRgb::FormatId}) {
        CDecodeReport report;
        try {
            auto decoded = DecodeSource(source, format, report);
            CollectNotes(report, info);
            info.failure.clear();
            return decoded;
        } catch (const CDataFormatException&) {
            if (info.failure.empty()) info.failure = report.Explain().GetBuffer();
            CollectNotes(report, info);
        }
    }
    return {};
}

void CollectFormat(IInputStream& decoded, TMediaInfo& info) {
    const TDataFormat& format = decoded.GetFormat();
    if (format.id == TDataFormat_AudioPcm::FormatId)
        info.sound = static_cast<const TDataFormat_AudioPcm&>(format);
    if (format.id == TDataFormat_ImageRgb::FormatId)
        info.picture = static_cast<const TDataFormat_ImageRgb&>(format);
    if (format.id == TDataFormat_VideoRgb::FormatId)
        info.video = static_cast<const TDataFormat_VideoRgb&>(format);
    info.decodedSize = decoded.GetLength();
    info.chain = ListChain(decoded);
}

std::vector<TFrameRange> GetRanges(IAudioMeter& meter, TAudioFinding finding) {
    std::vector<TFrameRange> ranges(meter.GetRanges(finding, nullptr, 0));
    meter.GetRanges(finding, ranges.data(), ranges.size());
    return ranges;
}

TInfoLevels GetLevels(IAudioMeter& meter, std::uint32_t channels) {
    TInfoLevels levels;
    levels.whole = meter.GetLevels();
    for (std::uint32_t i = 0; i < channels; ++i) levels.channels.push_back(meter.GetChannelLevels(i));
    levels.silences = GetRanges(meter, AUDIO_FINDING_SILENCE);
    levels.clippings = GetRanges(meter, AUDIO_FINDING_CLIPPING);
    return levels;
}

void Save(const std::string& name, const void* bytes, std::size_t size) {
    const auto file = COutputFile::Create(name, true, {});
    file->Write(bytes, size);
    file->Finish();
    file->Keep();
}

/// Reads the whole sound, once for all wishes.
void ReadWishes(const CRefPtr<IInputStream>& decoded, const TSoundWishes& wishes, TMediaInfo& info) {
    if (!info.sound)
        throw TProgramError{VRL_L("'") + info.path + VRL_L("' has no sound that could be decoded")};
    const std::optional<std::uint64_t> frames = info.GetFrames();
    const bool isDrawn = !wishes.picture.empty() || !wishes.peaks.empty();
    if (isDrawn && !frames)
        throw TProgramError{VRL_L("The length of '") + info.path +
                            VRL_L("' is not known, so that it cannot be drawn; convert it first")};

    std::vector<CSoundSink*> sinks;
    CRefPtr<IAudioMeter> meter;
    std::unique_ptr<CMeterSink> meterSink;
    std::unique_ptr<CSoundPicture> picture;
    std::unique_ptr<CPeaks> peaks;
    if (wishes.hasLevels) {
        const bool isMasked =
            info.riff && info.riff->format && info.riff->format->channels == info.sound->channels;
        meter = StartMeter(*info.sound, isMasked ? info.riff->format->channelMask : 0);
        meterSink = std::make_unique<CMeterSink>(*meter);
        sinks.push_back(meterSink.get());
    }
    if (!wishes.picture.empty()) {
        const std::size_t slash = info.path.find_last_of(VRL_L("/\\"));
        const wstring name = slash == wstring::npos ? info.path : info.path.substr(slash + 1);
        picture =
            std::make_unique<CSoundPicture>(*info.sound, *frames, std::string(name.begin(), name.end()));
        sinks.push_back(picture.get());
    }
    if (!wishes.peaks.empty()) {
        peaks = std::make_unique<CPeaks>(*info.sound, *frames, wishes.points);
        sinks.push_back(peaks.get());
    }

    CProgress progress(static_cast<std::uint64_t>(std::max<std::int64_t>(info.decodedSize, 0)));
    const CInterrupt interrupt;
    const std::uint64_t read = ReadSound(*decoded, sinks, [&](std::uint64_t done) {
        progress.Show(done);
        if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
    });
    if (frames && read < *frames)
        info.warnings.push_back(Widened("Only " + std::to_string(read) + " of " + std::to_string(*frames) +
                                        " frames could be read"));
    if (meter) info.levels = GetLevels(*meter, info.sound->channels);
    if (picture) {
        const std::vector<std::uint8_t> png = picture->ToPng();
        Save(wishes.picture, png.data(), png.size());
    }
    if (peaks) {
        const std::string json = peaks->ToJson();
        Save(wishes.peaks, json.data(), json.size());
    }
}

} // namespace

std::optional<std::uint64_t> TMediaInfo::GetFrames() const {
    const std::uint32_t block = sound ? sound->GetBlockSize() : video ? video->image.GetSizeInBytes() : 0;
    if (block == 0 || decodedSize < 0) return {};
    const std::uint64_t frames = static_cast<std::uint64_t>(decodedSize) / block;
    // The decoder of the library believes what a file declares.
    if (!riff || !riff->format || riff->format->blockSize == 0 || riff->format->tag != kPcm) return frames;
    return std::min(frames, riff->foundSound / riff->format->blockSize);
}

double TMediaInfo::GetFrameSeconds() const {
    if (sound && sound->samplesPerSec > 0) return 1.0 / sound->samplesPerSec;
    if (video && video->frameRate > 0) return 1.0 / static_cast<double>(video->frameRate);
    return 0;
}

TMediaInfo CollectInfo(const std::string& name, const TSoundWishes& wishes) {
    TMediaInfo info;
    info.path = Widened(name);
    const CInputStreamSelector source(info.path.c_str());
    IInputStream& stream = *source.GetInputStreamTmp();
    info.size = static_cast<std::uint64_t>(stream.GetLength());
    CollectRiff(stream, info);
    stream.Seek(0);
    const auto brief = CBriefInput::Begin(stream);
    const auto decoded = Decode(CInputStreamSelector(brief.Get()), info);
    brief->EndSearch();
    if (decoded) {
        CollectFormat(*decoded, info);
        // It stands for the file.
        if (info.chain.back().classId == CBriefInput::ClassId) info.chain.back() = ListChain(stream).front();
        info.tags = GetSoundTexts(*decoded);
        if (wishes.hasLevels || !wishes.picture.empty() || !wishes.peaks.empty())
            ReadWishes(decoded, wishes, info);
    }
    CollectMetadata(stream, info);
    CheckReading(stream, info.path);
    CheckEnding(name, info);
    return info;
}
