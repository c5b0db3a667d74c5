// An installed FFmpeg, as processes: "ffprobe" tells what is in the file, "ffmpeg" decodes its first sound.
#include "FfmpegProcess.h"
#include "FileCopy_linux.h"
#include "SystemSound.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <string>
#include <string_view>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemSound_linux");
constexpr const wchar* kOpen = VRL_L("ISystemSound::Open");
constexpr const wchar* kRead = VRL_L("ISystemSound::Read");

constexpr TFailure kNoFfmpeg{kOpen, kFile, 1, VRL_L("It is decoded by FFmpeg, which is not installed")};
constexpr TFailure kNoSound{kOpen, kFile, 2, VRL_L("FFmpeg finds no sound in it")};
constexpr TFailure kNotStarted{kOpen, kFile, 3, VRL_L("FFmpeg cannot be started")};
constexpr TFailure kFailed{kRead, kFile, 4, VRL_L("FFmpeg failed")};
constexpr TFailure kSilent{kRead, kFile, 5, VRL_L("FFmpeg does not answer")};

/// The copy of the file, as the processes find it; and nothing else, whatever the file refers to.
const std::vector<std::string> kInput{"-v", "quiet", "-protocol_whitelist", "file", "-i", "/dev/fd/3"};
constexpr std::uint32_t kMaxChannels = 64;

using TFields = std::map<std::string, std::string, std::less<>>;

/// The lines "name=value" of a text.
TFields ReadFields(std::string_view text) {
    TFields fields;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (const std::size_t at = line.find('='); at != std::string_view::npos)
            fields.emplace(line.substr(0, at), line.substr(at + 1));
    }
    return fields;
}

/// 0 when it is no number.
std::uint32_t GetNumber(const TFields& fields, const char* name) {
    std::uint32_t number = 0;
    const auto field = fields.find(name);
    if (field == fields.end()) return 0;
    const std::string& text = field->second;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

/// What ffprobe says of the first sound of the file.
TFields Probe(const std::string& program, int file) {
    std::vector<std::string> arguments{"-select_streams",
                                       "a:0",
                                       "-show_entries",
                                       "stream=codec_name,sample_fmt,sample_rate,channels",
                                       "-of",
                                       "default=noprint_wrappers=1"};
    arguments.insert(arguments.begin(), kInput.begin(), kInput.end());
    CFfmpegProcess process(program, arguments, file);
    if (!process.IsStarted()) Raise<CDataFormatException>(kNotStarted);
    constexpr std::size_t kMaxText = 4096;
    std::string text;
    char block[512];
    ssize_t count = 0;
    while (text.size() < kMaxText && (count = process.Read(block, sizeof(block))) > 0)
        text.append(block, static_cast<std::size_t>(count));
    return ReadFields(text);
}

/// The narrowest format that holds the samples of a decoder.
std::uint32_t GetSampleFormat(std::string_view name) {
    if (name.starts_with("u8") || name.starts_with("s16")) return SAMPLE_FORMAT_16BIT;
    if (name.starts_with("s32")) return SAMPLE_FORMAT_32BIT;
    return SAMPLE_FORMAT_FLOAT;
}

const char* GetRawFormat(std::uint32_t format) {
    if (format == SAMPLE_FORMAT_16BIT) return "s16le";
    return format == SAMPLE_FORMAT_32BIT ? "s32le" : "f32le";
}

class CFfmpegSound : public ISystemSound {
public:
    CFfmpegSound(const std::string& program, std::shared_ptr<const CFileCopy> file,
                 const TDataFormat_AudioPcm& format)
        : file_(std::move(file)), format_(format),
          process_(program, GetArguments(format.sampleFormat), file_->GetState().descriptor) {
        if (!process_.IsStarted()) Raise<CDataFormatException>(kNotStarted);
    }

    const TDataFormat_AudioPcm& GetFormat() const override { return format_; }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        constexpr std::uint64_t kMost = 1 << 20;
        const ssize_t count = process_.Read(buffer, static_cast<std::size_t>(std::min(size, kMost)));
        if (count < 0) Raise<CIOException>(kSilent);
        if (count == 0 && !process_.HasSucceeded()) Raise<CIOException>(kFailed);
        return static_cast<std::uint64_t>(count);
    }

private:
    static std::vector<std::string> GetArguments(std::uint32_t sampleFormat) {
        std::vector<std::string> arguments = kInput;
        arguments.insert(arguments.begin(), "-nostdin");
        for (const char* const argument : {"-map", "0:a:0", "-f", GetRawFormat(sampleFormat), "-"})
            arguments.emplace_back(argument);
        return arguments;
    }

    std::shared_ptr<const CFileCopy> file_;
    TDataFormat_AudioPcm format_;
    CFfmpegProcess process_;
};

} // namespace

std::unique_ptr<ISystemSound> ISystemSound::Open(std::shared_ptr<const CFileCopy> file) {
    const std::string ffmpeg = FindProgram("ffmpeg");
    const std::string ffprobe = FindProgram("ffprobe");
    if (ffmpeg.empty() || ffprobe.empty()) Raise<CDataFormatException>(kNoFfmpeg);
    const TFields fields = Probe(ffprobe, file->GetState().descriptor);
    const std::uint32_t channels = GetNumber(fields, "channels");
    const std::uint32_t rate = GetNumber(fields, "sample_rate");
    const auto sampleFormat = fields.find("sample_fmt");
    if (const auto codec = fields.find("codec_name"); codec != fields.end())
        NoteValue(VRL_L("codec"), PathFromUtf8(codec->second.c_str()).c_str());
    if (channels == 0 || channels > kMaxChannels || rate == 0 || sampleFormat == fields.end())
        Raise<CDataFormatException>(kNoSound);
    const TDataFormat_AudioPcm format(GetSampleFormat(sampleFormat->second), channels, rate);
    return std::make_unique<CFfmpegSound>(ffmpeg, std::move(file), format);
}
