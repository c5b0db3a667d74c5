#include "OutputFile.h"

#include "Diagnostics.h"
#include "FileNames.h"
#include "Terminal.h"

#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>
#include <vorlund/WavWriter.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

// The streams of outputs are parts of them. Objects that count as such must be made through the class store,
// where several files are written at a time: the counter of objects takes no lock.

/// The output as a stream without positions.
class CPlainStream final : public COutputStreamImpl<IOutputStream> {
public:
    explicit CPlainStream(COutputFile& file) : output(&file) {}

    COutputFile* output;

    std::uint32_t GetCapabilities() override { return STREAM_CAPABILITY_WRITE; }
    void Write(const void* bytes, std::uint64_t count) override { output->Write(bytes, count); }
};

class CNowhere final : public COutputFile {
public:
    void Write(const void*, std::uint64_t) override {}
    CRefPtr<IOutputStream> OpenStream() override { return CRefPtr<IOutputStream>::Share(&stream_); }
    void Finish() override {}
    void Keep() override {}

private:
    CPlainStream stream_{*this};
};

class CStandardOutput final : public COutputFile {
public:
    CRefPtr<IOutputStream> OpenStream() override { return CRefPtr<IOutputStream>::Share(&stream_); }
    void Keep() override {}
    void Write(const void* bytes, std::uint64_t count) override {
        if (std::fwrite(bytes, 1, static_cast<std::size_t>(count), file_) != count) Fail();
    }
    void Finish() override {
        if (std::fflush(file_) != 0) Fail();
    }

private:
    [[noreturn]] static void Fail() { throw TProgramError{VRL_L("Cannot write to the standard output")}; }

    std::FILE* file_ = GetBinaryOutput();
    CPlainStream stream_{*this};
};

/// Links count for what they lead to, which may not be there yet.
fs::path FindTarget(fs::path path) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / next;
    }
    return path;
}

/// Names such as "NUL" are devices of Windows in every folder, of which its file status knows nothing.
bool IsDeviceOfWindows(const fs::path& path) {
    std::error_code none;
    return fs::absolute(path, none).native().starts_with(fs::path("\\\\.\\").native());
}

/// A name beside the target that nothing has.
fs::path FindFreeName(const fs::path& target) {
    std::error_code none;
    for (int number = 1;; ++number) {
        fs::path name = target;
        name += ".part";
        if (number > 1) name += std::to_string(number);
        if (!fs::exists(fs::symlink_status(name, none))) return name;
    }
}

/// The file as the library's writer sees it.
class CFileStream final : public COutputStreamImpl<IOutputStream> {
public:
    /// Lives as long as the stream.
    std::ofstream* file = nullptr;
    bool hasPositions = true;
    std::function<void()> check;

    std::uint32_t GetCapabilities() override {
        return hasPositions ? COutputStreamImpl::GetCapabilities() : STREAM_CAPABILITY_WRITE;
    }
    std::int64_t GetLength() override {
        const std::int64_t position = Tell();
        file->seekp(0, std::ios::end);
        const std::int64_t length = Tell();
        Seek(position);
        return length;
    }
    void Flush() override {
        file->flush();
        check();
    }
    void Seek(std::int64_t position) override {
        file->seekp(position);
        check();
    }
    std::int64_t Tell() override { return file->tellp(); }
    void Write(const void* bytes, std::uint64_t count) override {
        file->write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        check();
    }
};

/// Writes beside the file that was asked for and takes its place at the end, so that a failure leaves no
/// partial file and spares what was there; devices and the like are written directly.
class CDiskFile final : public COutputFile {
public:
    explicit CDiskFile(const std::string& name)
        : name_(name), target_(FindTarget(ToPath(name))), written_(target_) {
        std::error_code none;
        const fs::file_status status = fs::status(target_, none);
        // A link that leads to itself is for the system to refuse.
        isDirect_ = (fs::exists(status) && !fs::is_regular_file(status)) || fs::is_symlink(target_, none) ||
                    IsDeviceOfWindows(target_);
        if (!isDirect_) written_ = FindFreeName(target_);
    }
    ~CDiskFile() override {
        writer_.reset();
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
    }

    /// The file is a WAV file.
    void BeginWav(const TDataFormat_AudioPcm& format, std::optional<std::uint64_t> length) {
        const auto stream = OpenStream();
        TWavWriterFormat written(format);
        // The library's own decoder reads it.
        written.description = WAV_DESCRIPTION_PLAIN;
        TWavWriterOptions options;
        options.length = length;
        options.canGrow = !length;
        writer_ = std::make_unique<CWavWriter>(stream.Get(), written, options);
    }

    void Write(const void* bytes, std::uint64_t count) override {
        if (writer_) return writer_->Write(bytes, count);
        file_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
        Check();
    }
    CRefPtr<IOutputStream> OpenStream() override {
        stream_.file = &file_;
        // A device gets its final header at once.
        stream_.hasPositions = !isDirect_;
        stream_.check = [this] { Check(); };
        return CRefPtr<IOutputStream>::Share(&stream_);
    }
    void Finish() override {
        if (writer_) writer_->Finish();
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
    void Check() const {
        if (!file_) Fail();
    }
    [[noreturn]] void Fail() const {
        throw TProgramError{VRL_L("Cannot write '") + PathFromUtf8(name_.c_str()) + VRL_L("'")};
    }

    const std::string name_;
    const fs::path target_;
    fs::path written_;
    std::ofstream file_;
    CFileStream stream_;
    /// Writes into `file_`, unless that has raw bytes.
    std::unique_ptr<CWavWriter> writer_;
    bool isDirect_ = false;
    /// The file is there and does not stay.
    bool isUnwanted_ = false;
};

} // namespace

std::unique_ptr<COutputFile> COutputFile::Create(const std::string& name, bool raw,
                                                 const TDataFormat_AudioPcm& format,
                                                 std::optional<std::uint64_t> length) {
    if (name.empty()) return std::make_unique<CNowhere>();
    if (name == "-") return std::make_unique<CStandardOutput>();
    auto file = std::make_unique<CDiskFile>(name);
    file->Open();
    if (!raw && GetEnding(name) == "wav") file->BeginWav(format, length);
    return file;
}
