#include "OutputFile.h"

#include "Diagnostics.h"
#include "Terminal.h"
#include "WavHeader.h"

#include <vorlund/Path.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

class CStandardOutput final : public COutputFile {
public:
    void Write(const void* bytes, std::uint64_t count) override {
        if (std::fwrite(bytes, 1, static_cast<std::size_t>(count), file_) != count) Fail();
    }
    void Finish() override {
        if (std::fflush(file_) != 0) Fail();
    }

private:
    [[noreturn]] static void Fail() { throw TProgramError{VRL_L("Cannot write to the standard output")}; }

    std::FILE* file_ = GetBinaryOutput();
};

fs::path ToPath(const std::string& name) {
    return {std::u8string(name.begin(), name.end())};
}

std::string ToUtf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// Writes beside the file that was asked for and takes its place at the end, so that a failure leaves no
/// partial file and spares what was there; devices and the like are written directly.
class CDiskFile final : public COutputFile {
public:
    CDiskFile(const std::string& name, bool hasHeader, const TDataFormat_AudioPcm& format)
        : target_(ToPath(name)), written_(target_), hasHeader_(hasHeader), format_(format) {
        std::error_code none;
        const fs::file_status status = fs::status(target_, none);
        isDirect_ = fs::exists(status) && !fs::is_regular_file(status);
        if (!isDirect_) written_ += ".part";
    }
    ~CDiskFile() override {
        // Without memory for its buffer, the file is there and yet opening it fails.
        if (isDirect_ || !(isUnwanted_ || file_.is_open())) return;
        file_.close();
        std::error_code ignored;
        fs::remove(written_, ignored);
    }

    /// Apart from the constructor, so that the file is removed whatever fails.
    void Open() {
        file_.open(written_, std::ios::binary | std::ios::trunc);
        Check();
        isUnwanted_ = true;
        if (hasHeader_) WriteHeader();
    }

    void Write(const void* bytes, std::uint64_t count) override {
        file_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        count_ += count;
        Check();
    }
    void Finish() override {
        if (hasHeader_) {
            if (count_ % 2 != 0) file_.put('\0');
            // A device cannot seek back: it keeps the header of an empty file.
            if (!isDirect_) {
                file_.seekp(0);
                WriteHeader();
            }
        }
        file_.close();
        Check();
    }
    void Keep() override {
        std::error_code error;
        if (!isDirect_) fs::rename(written_, target_, error);
        if (error) Fail();
        isUnwanted_ = false;
    }

private:
    void WriteHeader() {
        const auto header = MakeWavHeader(format_, count_);
        file_.write(reinterpret_cast<const char*>(header.data()), header.size());
    }
    void Check() const {
        if (!file_) Fail();
    }
    [[noreturn]] void Fail() const {
        throw TProgramError{VRL_L("Cannot write '") + PathFromUtf8(ToUtf8(target_).c_str()) + VRL_L("'")};
    }

    const fs::path target_;
    fs::path written_;
    const bool hasHeader_;
    const TDataFormat_AudioPcm format_;
    std::ofstream file_;
    bool isDirect_ = false;
    /// The file is there and does not stay.
    bool isUnwanted_ = false;
    std::uint64_t count_ = 0;
};

bool IsWavName(const std::string& name) {
    std::string extension = ToPath(name).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char unit) { return static_cast<char>(std::tolower(unit)); });
    return extension == ".wav";
}

} // namespace

std::unique_ptr<COutputFile> COutputFile::Create(const std::string& name, bool raw,
                                                 const TDataFormat_AudioPcm& format) {
    if (name.empty()) return std::make_unique<COutputFile>();
    if (name == "-") return std::make_unique<CStandardOutput>();
    auto file = std::make_unique<CDiskFile>(name, !raw && IsWavName(name), format);
    file->Open();
    return file;
}
