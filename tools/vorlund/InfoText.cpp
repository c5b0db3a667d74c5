#include "InfoText.h"

#include "Chain.h"
#include "Diagnostics.h"
#include "JsonWriter.h"
#include "SoundInfo.h"

#include <vorlund/Path.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace vorlund;

namespace {

/// A file of a million chunks should not fill the screen.
constexpr std::size_t kShownRows = 64;
constexpr std::size_t kShownRanges = 8;

constexpr struct {
    std::uint16_t tag;
    const char* name;
} kWaveTags[] = {
    {1, "PCM"},          {2, "Microsoft ADPCM"}, {3, "float"},   {6, "A-law"},  {7, "mu-law"},
    {0x11, "IMA ADPCM"}, {0x31, "GSM 6.10"},     {0x50, "MPEG"}, {0x55, "MP3"},
};

std::string DescribeTag(std::uint16_t tag) {
    for (const auto& row : kWaveTags) {
        if (row.tag == tag) return row.name;
    }
    return "format tag " + std::to_string(tag);
}

std::string Counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string Fixed(double number, int digits) {
    if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, number);
    return text;
}

std::string DescribeSound(const TDataFormat_AudioPcm& format) {
    const std::string bits = std::to_string(format.GetSampleSize() * 8);
    return (format.sampleFormat == SAMPLE_FORMAT_FLOAT ? bits + "-bit float" : bits + "-bit PCM") + ", " +
           Counted(format.channels, "channel", "channels") + ", " + std::to_string(format.samplesPerSec) +
           " Hz";
}

std::string DescribeStored(const TRiffFormat& format) {
    std::string text = DescribeTag(format.tag) + ", " + Counted(format.bits, "bit", "bits");
    if (format.validBits != format.bits) text += " (" + std::to_string(format.validBits) + " valid)";
    text += ", " + Counted(format.channels, "channel", "channels") + ", " +
            std::to_string(format.samplesPerSec) + " Hz";
    if (!format.isExtensible) return text;
    char mask[16];
    std::snprintf(mask, sizeof mask, "0x%X", static_cast<unsigned int>(format.channelMask));
    return text + ", extensible, channel mask " + mask;
}

std::string DescribeRow(const TRiffRow& row) {
    std::string text = '"' + row.name + '"';
    if (row.number > 1) text += " #" + std::to_string(row.number);
    if (row.count > 1) text += " to #" + std::to_string(row.number + row.count - 1);
    return text + ": " + Counted(row.size, "byte", "bytes") + (row.count > 1 ? " each, the first" : "") +
           " at " + std::to_string(row.offset);
}

std::string DescribeRanges(const std::vector<TFrameRange>& ranges, std::uint32_t rate) {
    std::string text;
    for (std::size_t i = 0; i < std::min(ranges.size(), kShownRanges); ++i) {
        const auto seconds = [rate](std::uint64_t frames) {
            return Fixed(static_cast<double>(frames) / rate, 3);
        };
        text += (i == 0 ? "" : ", ") + seconds(ranges[i].first) + " to " +
                seconds(ranges[i].first + ranges[i].count) + " s";
    }
    return ranges.size() > kShownRanges ? text + ", ..." : text;
}

void PrintLevels(const TMediaInfo& info, const CDiagnostics& diagnostics) {
    const TInfoLevels& levels = *info.levels;
    const TAudioLevels& whole = levels.whole;
    const std::uint32_t rate = info.sound->samplesPerSec;
    diagnostics.PrintField("Loudness", Fixed(whole.integrated, 1) + " LUFS, range " + Fixed(whole.range, 1) +
                                           " LU, at most " + Fixed(whole.momentaryMax, 1) +
                                           " LUFS in 400 ms, " + Fixed(whole.shortTermMax, 1) +
                                           " LUFS in 3 s");
    diagnostics.PrintField("Peak", Fixed(ToDecibels(whole.truePeak), 1) + " dBTP, samples " +
                                       Fixed(ToDecibels(whole.peak), 2) + " dBFS at " +
                                       Fixed(static_cast<double>(whole.peakFrame) / rate, 3) + " s");
    for (std::size_t i = 0; i < levels.channels.size(); ++i) {
        const TChannelLevels& channel = levels.channels[i];
        diagnostics.PrintField("Channel", std::to_string(i + 1) + ": peak " +
                                              Fixed(ToDecibels(channel.peak), 2) + " dBFS, RMS " +
                                              Fixed(ToDecibels(channel.rms), 2) + " dBFS, offset " +
                                              Fixed(channel.dc * 100, 3) + " %");
    }
    if (whole.clippedSamples > 0)
        diagnostics.PrintField("Clipped", Counted(whole.clippedSamples, "sample", "samples") + ": " +
                                              DescribeRanges(levels.clippings, rate));
    if (whole.silentFrames > 0)
        diagnostics.PrintField("Silence", Fixed(static_cast<double>(whole.silentFrames) / rate, 3) +
                                              " s: " + DescribeRanges(levels.silences, rate));
    if (whole.notFinite > 0)
        diagnostics.PrintField("Damage",
                               Counted(whole.notFinite, "sample is no number", "samples are no numbers"));
}

void PrintRiff(const TRiffTable& riff, const CDiagnostics& diagnostics) {
    if (riff.format) diagnostics.PrintField("Stored as", DescribeStored(*riff.format));
    if (riff.declaredSound) {
        std::string text = Counted(riff.foundSound, "byte", "bytes");
        if (riff.foundSound != *riff.declaredSound)
            text += " of " + std::to_string(*riff.declaredSound) + " that are declared";
        diagnostics.PrintField("Sound", text);
    }
    std::uint64_t shown = 0;
    for (std::size_t i = 0; i < std::min(riff.rows.size(), kShownRows); ++i) {
        diagnostics.PrintField("Chunk", DescribeRow(riff.rows[i]));
        shown += riff.rows[i].count;
    }
    if (shown < riff.chunks)
        diagnostics.PrintField("Chunk", "... and " + std::to_string(riff.chunks - shown) + " more");
}

/// Texts of files may have several lines, and anything else.
wstring OneLine(wstring text) {
    text.erase(text.find_last_not_of(VRL_L(" \r\n")) + 1);
    for (wchar& unit : text) {
        if (unit < VRL_L(' ') || unit == 0x7F) unit = VRL_L(' ');
    }
    return text;
}

wstring DescribeCue(const TWavCuePoint& cue) {
    std::string text = "frame " + std::to_string(cue.position);
    if (cue.length > 0) text += " to " + std::to_string(std::uint64_t{cue.position} + cue.length);
    if (!cue.label.empty()) text += ": " + cue.label;
    return OneLine(PathFromUtf8(text.c_str()));
}

CJsonWriter& Text(CJsonWriter& json, const std::string& text) {
    return json.Text(PathFromUtf8(text.c_str()).c_str());
}

CJsonWriter& Count(CJsonWriter& json, const char* key, std::uint64_t count) {
    return json.Key(key).Number(static_cast<std::int64_t>(count));
}

void WriteRiff(const TRiffTable& riff, CJsonWriter& json) {
    Text(json.BeginObject().Key("form"), riff.form);
    Text(json.Key("type"), riff.type);
    Count(json, "declaredSize", riff.declaredSize);
    json.Key("declaredSound");
    riff.declaredSound ? json.Number(static_cast<std::int64_t>(*riff.declaredSound)) : json.Null();
    Count(json, "foundSound", riff.foundSound);
    json.Key("format");
    if (riff.format) {
        Count(json.BeginObject(), "tag", riff.format->tag);
        Text(json.Key("name"), DescribeTag(riff.format->tag));
        json.Key("extensible").Flag(riff.format->isExtensible);
        Count(json, "channels", riff.format->channels);
        Count(json, "rate", riff.format->samplesPerSec);
        Count(json, "bits", riff.format->bits);
        Count(json, "validBits", riff.format->validBits);
        Count(json, "channelMask", riff.format->channelMask).EndObject();
    } else {
        json.Null();
    }
    Count(json, "chunkCount", riff.chunks);
    json.Key("chunks").BeginArray();
    for (const TRiffRow& row : riff.rows) {
        Text(json.BeginObject().Key("name"), row.name);
        Count(json, "number", row.number);
        Count(json, "offset", row.offset);
        Count(json, "size", row.size);
        Count(json, "count", row.count).EndObject();
    }
    json.EndArray().EndObject();
}

void WriteRanges(const char* key, const std::vector<TFrameRange>& ranges, CJsonWriter& json) {
    json.Key(key).BeginArray();
    for (const TFrameRange& range : ranges) {
        Count(json.BeginObject(), "first", range.first);
        Count(json, "count", range.count).EndObject();
    }
    json.EndArray();
}

void WriteLevels(const TInfoLevels& levels, CJsonWriter& json) {
    const TAudioLevels& whole = levels.whole;
    json.BeginObject();
    json.Key("integrated").Real(whole.integrated).Key("range").Real(whole.range);
    json.Key("momentaryMax").Real(whole.momentaryMax).Key("shortTermMax").Real(whole.shortTermMax);
    json.Key("peak").Real(ToDecibels(whole.peak));
    Count(json, "peakFrame", whole.peakFrame);
    json.Key("truePeak").Real(ToDecibels(whole.truePeak)).Key("rms").Real(ToDecibels(whole.rms));
    Count(json, "clippedSamples", whole.clippedSamples);
    Count(json, "silentFrames", whole.silentFrames);
    Count(json, "notFinite", whole.notFinite);
    json.Key("channels").BeginArray();
    for (const TChannelLevels& channel : levels.channels) {
        json.BeginObject()
            .Key("peak")
            .Real(ToDecibels(channel.peak))
            .Key("truePeak")
            .Real(ToDecibels(channel.truePeak));
        json.Key("rms").Real(ToDecibels(channel.rms)).Key("offset").Real(channel.dc);
        Count(json, "clippedSamples", channel.clippedSamples).EndObject();
    }
    json.EndArray();
    WriteRanges("silences", levels.silences, json);
    WriteRanges("clippings", levels.clippings, json);
    json.EndObject();
}

} // namespace

void PrintInfo(const TMediaInfo& info, const CDiagnostics& diagnostics, bool isFurther) {
    if (isFurther) diagnostics.PrintBreak();
    diagnostics.PrintField("File", info.path);
    diagnostics.PrintField("Container", info.container.empty() ? VRL_L("unknown") : info.container);
    diagnostics.PrintField("Size", Counted(info.size, "byte", "bytes"));
    if (info.sound) diagnostics.PrintField("Format", DescribeSound(*info.sound));
    const TDataFormat_ImageRgb* const image = info.picture ? &*info.picture
                                              : info.video ? &info.video->image
                                                           : nullptr;
    if (image)
        diagnostics.PrintField(
            "Format",
            std::string(info.video ? "video, " : "picture, ") + std::to_string(image->width) + "x" +
                std::to_string(image->height) +
                (info.video ? ", " + Fixed(static_cast<double>(info.video->frameRate), 3) + " frames a second"
                            : ""));
    if (const std::optional<std::uint64_t> frames = info.GetFrames())
        diagnostics.PrintField("Duration", Fixed(static_cast<double>(*frames) * info.GetFrameSeconds(), 3) +
                                               " s, " + Counted(*frames, "frame", "frames"));
    if (info.riff) PrintRiff(*info.riff, diagnostics);
    for (const TSoundText& tag : info.tags)
        diagnostics.PrintField("Tag", PathFromUtf8(tag.name.c_str()) + VRL_L(": ") + OneLine(tag.text));
    for (const TWavCuePoint& cue : info.cues) diagnostics.PrintField("Cue", DescribeCue(cue));
    if (!info.chain.empty()) diagnostics.PrintField("Chain", DescribeChain(info.chain));
    if (info.levels) PrintLevels(info, diagnostics);
    for (const wstring& warning : info.warnings) diagnostics.PrintField("Warning", warning);
    if (!info.failure.empty()) diagnostics.PrintField("Decoding", VRL_L("not possible: ") + info.failure);
}

void WriteInfo(const TMediaInfo& info, CJsonWriter& json) {
    json.BeginObject().Key("path").Text(info.path.c_str()).Key("container");
    info.container.empty() ? json.Null() : json.Text(info.container.c_str());
    Count(json, "size", info.size);
    json.Key("kind").Text(info.sound ? "sound" : info.video ? "video" : info.picture ? "picture" : "unknown");
    if (info.sound) {
        json.Key("sampleFormat").Text(info.sound->sampleFormat == SAMPLE_FORMAT_FLOAT ? "float" : "integer");
        Count(json, "bits", std::uint64_t{info.sound->GetSampleSize()} * 8);
        Count(json, "channels", info.sound->channels);
        Count(json, "rate", info.sound->samplesPerSec);
    }
    if (const TDataFormat_ImageRgb* const image = info.picture ? &*info.picture
                                                  : info.video ? &info.video->image
                                                               : nullptr) {
        Count(json, "width", image->width);
        Count(json, "height", image->height);
    }
    const std::optional<std::uint64_t> frames = info.GetFrames();
    json.Key("frames");
    frames ? json.Number(static_cast<std::int64_t>(*frames)) : json.Null();
    json.Key("seconds");
    frames ? json.Real(static_cast<double>(*frames) * info.GetFrameSeconds()) : json.Null();
    json.Key("riff");
    if (info.riff) {
        WriteRiff(*info.riff, json);
    } else {
        json.Null();
    }
    json.Key("tags").BeginArray();
    for (const TSoundText& tag : info.tags) {
        Text(json.BeginObject().Key("name"), tag.name);
        json.Key("text").Text(tag.text.c_str()).EndObject();
    }
    json.EndArray();
    json.Key("cues").BeginArray();
    for (const TWavCuePoint& cue : info.cues) {
        Count(json.BeginObject(), "id", cue.id);
        Count(json, "position", cue.position);
        Count(json, "length", cue.length);
        Text(json.Key("label"), cue.label);
        Text(json.Key("note"), cue.note).EndObject();
    }
    json.EndArray();
    json.Key("chain").BeginArray();
    for (auto link = info.chain.rbegin(); link != info.chain.rend(); ++link)
        json.Text(link->className.GetBuffer());
    json.EndArray();
    json.Key("levels");
    if (info.levels) {
        WriteLevels(*info.levels, json);
    } else {
        json.Null();
    }
    json.Key("warnings").BeginArray();
    for (const wstring& warning : info.warnings) json.Text(warning.c_str());
    json.EndArray().Key("failure");
    info.failure.empty() ? json.Null() : json.Text(info.failure.c_str());
    json.EndObject();
}
