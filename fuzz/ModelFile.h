/// \file
/// A file, the streams that read and write it, and what they must answer: a vector of bytes and some
/// positions.
#pragma once

#include "FuzzFolder.h"
#include "ModelInput.h"
#include "WavFuzz.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/Path.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace vorlund::fuzz {

/// The file of this process, removed at its end.
class CModelPath {
public:
    CModelPath() = default;
    CModelPath(const CModelPath&) = delete;
    CModelPath& operator=(const CModelPath&) = delete;
    ~CModelPath() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    const wchar* Get() const { return text_.c_str(); }

private:
    const std::filesystem::path path_ = NewPath();
    const wstring text_ = PathFromUtf8(path_.string().c_str());
};

/// One writer, which writes through, and two readers.
class CModelFile {
public:
    CModelFile() {
        // Empties the file.
        Open(false);
        Close();
    }

    void Step(CModelInput& input) {
        const unsigned int step = input.Byte() % 12;
        TReader& reader = readers_[input.Byte() % readers_.size()];
        switch (step) {
        case 0:
            return Open(input.Byte() % 2 == 0);
        case 1:
        case 2:
        case 3:
            return Write(input);
        case 4:
            return SeekWriter(input.Position());
        case 5:
            return Close();
        case 6:
            return OpenReader(reader);
        case 7:
        case 8:
            return Read(reader, input.Number());
        case 9:
            return SeekReader(reader, input.Position());
        case 10:
            return Skip(reader, input.Position());
        default:
            reader.stream->Close();
            reader.isOpen = false;
        }
    }

    void CheckState() {
        Check(writer_->GetCapabilities() == (isWriting_ ? 11u : 0u));
        if (isWriting_) {
            Check(writer_->GetLength() == static_cast<std::int64_t>(bytes_.size()));
            Check(writer_->Tell() == writeAt_);
        } else {
            Check(TypeOf([&] { writer_->Tell(); }) == EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED);
        }
        for (const TReader& reader : readers_) {
            Check(reader.stream->GetCapabilities() == (reader.isOpen ? 7u : 0u));
            Check(reader.stream->Eof() == (!reader.isOpen || reader.position >= reader.length));
            if (!reader.isOpen) continue;
            Check(reader.stream->Tell() == reader.position);
            Check(reader.stream->GetLength() == reader.length);
        }
    }

private:
    /// The file grows no further.
    static constexpr std::size_t kEnough = 300000;
    /// Beyond every buffer.
    static constexpr std::int64_t kFar = std::int64_t{1} << 40;

    struct TReader {
        CRefPtr<IFileInputStream> stream = CreateAs<IFileInputStream>(classid::CFileInputStream);
        bool isOpen = false;
        std::int64_t position = 0;
        std::int64_t length = 0;
    };

    void Open(bool append) {
        writer_->Open(path.Get(), append);
        isWriting_ = true;
        appends_ = append;
        writeAt_ = 0;
        if (!append) bytes_.clear();
        DropWindows();
    }

    void Close() {
        writer_->Close();
        isWriting_ = false;
    }

    /// Readers may go on with what they have read before a change; a seek that leaves it drops it.
    void DropWindows() {
        for (TReader& reader : readers_) {
            if (!reader.isOpen) continue;
            reader.stream->Seek(kFar);
            reader.stream->Seek(reader.position);
        }
    }

    void Write(CModelInput& input) {
        TBytes bytes = input.Bytes(input.Number());
        const std::size_t begin = appends_ ? bytes_.size() : static_cast<std::size_t>(writeAt_);
        if (begin > kEnough) bytes.clear();
        const TExceptionType raised = TypeOf([&] { writer_->Write(bytes.data(), bytes.size()); });
        Check(raised == (isWriting_ ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_IO));
        if (!isWriting_ || bytes.empty()) return;
        writer_->Flush();
        const std::size_t end = begin + bytes.size();
        if (bytes_.size() < end) bytes_.resize(end);
        std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(begin));
        writeAt_ = static_cast<std::int64_t>(end);
        DropWindows();
    }

    void SeekWriter(std::int64_t position) {
        // Systems differ in how far a file that is written may reach.
        position = std::min<std::int64_t>(position, kEnough);
        const TExceptionType raised = TypeOf([&] { writer_->Seek(position); });
        if (!isWriting_) return Check(raised == EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED);
        Check(raised == (position < 0 ? EXCEPTION_TYPE_IO : EXCEPTION_TYPE_GENERIC));
        if (position >= 0) writeAt_ = position;
    }

    void OpenReader(TReader& reader) {
        reader.stream->Open(path.Get());
        reader = {
            .stream = reader.stream, .isOpen = true, .length = static_cast<std::int64_t>(bytes_.size())};
    }

    void Read(TReader& reader, std::size_t size) {
        TBytes buffer(size + 1, 0xEE);
        std::uint64_t count = 0;
        const TExceptionType raised = TypeOf([&] { count = reader.stream->Read(buffer.data(), size); });
        if (!reader.isOpen) return Check(raised == EXCEPTION_TYPE_IO);
        Check(raised == EXCEPTION_TYPE_GENERIC);
        const auto position = static_cast<std::uint64_t>(reader.position);
        const std::uint64_t left = position < bytes_.size() ? bytes_.size() - position : 0;
        Check(count == std::min<std::uint64_t>(size, left));
        if (count > 0)
            Check(std::memcmp(buffer.data(), bytes_.data() + position, static_cast<std::size_t>(count)) == 0);
        Check(buffer[static_cast<std::size_t>(count)] == 0xEE);
        reader.position += static_cast<std::int64_t>(count);
    }

    void SeekReader(TReader& reader, std::int64_t position) {
        const TExceptionType raised = TypeOf([&] { reader.stream->Seek(position); });
        if (!reader.isOpen) return Check(raised == EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED);
        Check(raised == (position < 0 ? EXCEPTION_TYPE_IO : EXCEPTION_TYPE_GENERIC));
        if (position >= 0) reader.position = position;
    }

    void Skip(TReader& reader, std::int64_t count) {
        const auto wide = static_cast<std::uint64_t>(count);
        const TExceptionType raised = TypeOf([&] { reader.stream->Skip(wide); });
        const auto target = static_cast<std::int64_t>(static_cast<std::uint64_t>(reader.position) + wide);
        const bool isGood = reader.isOpen && target >= 0;
        Check(raised == (isGood ? EXCEPTION_TYPE_GENERIC : EXCEPTION_TYPE_IO));
        if (isGood) reader.position = target;
    }

    static inline const CModelPath path;

    CRefPtr<IFileOutputStream> writer_ = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
    std::array<TReader, 2> readers_;
    TBytes bytes_;
    bool isWriting_ = false;
    bool appends_ = false;
    std::int64_t writeAt_ = 0;
};

} // namespace vorlund::fuzz
