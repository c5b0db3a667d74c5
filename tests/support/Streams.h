/// \file
/// Streams in memory, well-behaved and faulty, and what tests need around them. Their settings are plain
/// members: make one with `Make<CMemoryInputStream>()` and set it up.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {

using TBytes = std::vector<std::uint8_t>;

/// `count` bytes 0, 1, 2 ... that differ from their neighbours; `first` begins the row.
inline TBytes Ramp(std::size_t count, unsigned int first = 0) {
    TBytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(first + i);
    return bytes;
}

/// A new object of a class of the tests, owned by the result.
template <class TClass> CRefPtr<TClass> Make() {
    return CRefPtr<TClass>::Adopt(static_cast<TClass*>(NewObject<TClass>()));
}

/// A member of every class of the tests that counts its living objects.
class CLiveObject {
public:
    CLiveObject() { ++count_; }
    CLiveObject(const CLiveObject&) = delete;
    CLiveObject& operator=(const CLiveObject&) = delete;
    ~CLiveObject() { --count_; }

    /// How many objects of the tests are alive.
    static int GetCount() { return count_; }

private:
    static inline std::atomic<int> count_ = 0;
};

/// A copy of a whole format record.
class CFormatCopy {
public:
    CFormatCopy() : CFormatCopy(GetEmptyFormat()) {}
    template <class TFormat> CFormatCopy(const TFormat& format) { Set(format); }

    void Set(const TDataFormat& format) {
        bytes_.resize(std::max<std::size_t>(format.size, sizeof(TDataFormat)));
        std::memcpy(bytes_.data(), &format, bytes_.size());
    }
    const TDataFormat& Get() const { return *reinterpret_cast<const TDataFormat*>(bytes_.data()); }

private:
    TBytes bytes_;
};

/// A format record of no more than its head.
inline TDataFormat HeadOnly(const CId& id) {
    return {id, sizeof(TDataFormat)};
}

/// Calls in order, for example "Seek 12"; shared by the streams that write into it.
using TCallLog = std::vector<std::string>;

namespace streamfailures {
inline constexpr const wchar* kFile = VRL_L("tests/support/Streams");
inline constexpr TFailure kBufferIsNull{VRL_L("test::CMemoryInputStream::Read"), kFile, 1,
                                        VRL_L("buffer is NULL")};
inline constexpr TFailure kCannotSeek{VRL_L("test::CFaultyInputStream::Seek"), kFile, 2,
                                      VRL_L("Cannot seek")};
inline constexpr TFailure kCannotTell{VRL_L("test::CFaultyInputStream::Tell"), kFile, 3,
                                      VRL_L("Cannot tell")};
inline constexpr TFailure kCannotRead{VRL_L("test::CFaultyInputStream::Read"), kFile, 4,
                                      VRL_L("Cannot read")};
inline constexpr TFailure kCannotWrite{VRL_L("test::CMemoryOutputStream::Write"), kFile, 5,
                                       VRL_L("Cannot write")};
} // namespace streamfailures

/// Reads `bytes`. Positions beyond the end are allowed and read nothing.
class CMemoryInputStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x0C5F4E1B, 0x9D2A6C47, 0x51B3A801};

    TBytes bytes;
    std::uint32_t capabilities = 7;
    CFormatCopy format;
    std::int64_t position = 0;
    /// How often `Close` was called.
    int closed = 0;
    /// Where the calls are written, or null.
    TCallLog* log = nullptr;

    void Close() override {
        Log("Close");
        ++closed;
    }
    std::uint32_t GetCapabilities() override { return capabilities; }
    std::int64_t GetLength() override { return static_cast<std::int64_t>(bytes.size()); }
    void Flush() override { Log("Flush"); }
    void Seek(std::int64_t newPosition) override {
        Log("Seek", newPosition);
        position = newPosition;
    }
    std::int64_t Tell() override { return position; }
    bool Eof() override { return GetRemaining() == 0; }
    const TDataFormat& GetFormat() override { return format.Get(); }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        Log("Read", static_cast<std::int64_t>(size));
        if (!buffer) Raise<CNullPtrException>(streamfailures::kBufferIsNull);
        const std::uint64_t count = std::min(size, GetRemaining());
        if (count > 0) std::memcpy(buffer, bytes.data() + position, static_cast<std::size_t>(count));
        position += static_cast<std::int64_t>(count);
        return count;
    }
    void Skip(std::uint64_t count) override {
        Log("Skip", static_cast<std::int64_t>(count));
        position += static_cast<std::int64_t>(count);
    }

protected:
    void Log(const char* call) {
        if (log) log->push_back(call);
    }
    void Log(const char* call, std::int64_t argument) {
        if (log) log->push_back(call + (" " + std::to_string(argument)));
    }
    std::uint64_t GetRemaining() const {
        const auto length = static_cast<std::int64_t>(bytes.size());
        return position >= 0 && position < length ? static_cast<std::uint64_t>(length - position) : 0;
    }

private:
    CLiveObject live_;
};

/// The same with faults. Without capability bit 1 it refuses `Seek`, without bit 2 `Tell`, both with
/// `COperationNotSupportedException`.
class CFaultyInputStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x3B904C6E, 0xA4F1D2C8, 0x51B3A802};

    /// The most bytes that one `Read` delivers.
    std::uint64_t maximumRead = ~std::uint64_t{0};
    /// `Read` delivers the bytes before this position and then calls `fail` for every further byte.
    std::optional<std::int64_t> failAt;
    /// `Seek` to this position or beyond calls `fail`.
    std::optional<std::int64_t> failSeekAt;
    /// What goes wrong; by default a `CIOException`.
    std::function<void()> fail = [] { Raise<CIOException>(streamfailures::kCannotRead); };
    /// What `Read` adds to its result.
    std::uint64_t exaggeration = 0;
    /// What `GetLength` answers instead of the number of bytes.
    std::optional<std::int64_t> claimedLength;

    std::int64_t GetLength() override { return claimedLength.value_or(CMemoryInputStream::GetLength()); }
    void Seek(std::int64_t newPosition) override {
        if (!(capabilities & STREAM_CAPABILITY_SEEK)) {
            Raise<COperationNotSupportedException>(streamfailures::kCannotSeek);
        }
        if (failSeekAt && newPosition >= *failSeekAt) fail();
        CMemoryInputStream::Seek(newPosition);
    }
    std::int64_t Tell() override {
        if (!(capabilities & STREAM_CAPABILITY_TELL)) {
            Raise<COperationNotSupportedException>(streamfailures::kCannotTell);
        }
        return CMemoryInputStream::Tell();
    }
    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        std::uint64_t wanted = std::min(size, maximumRead);
        if (failAt && size > 0) {
            if (position >= *failAt) fail();
            wanted =
                std::min(wanted, static_cast<std::uint64_t>(std::max<std::int64_t>(*failAt - position, 0)));
        }
        return CMemoryInputStream::Read(buffer, wanted) + exaggeration;
    }
};

/// Collects what is written in `bytes`, at the position, with zeros in a gap.
class CMemoryOutputStream : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A803};

    TBytes bytes;
    std::uint32_t capabilities = 11;
    /// The format that was announced last.
    CFormatCopy format;
    std::int64_t position = 0;
    int closed = 0;
    /// A `Write` that would go beyond this size raises `CIOException` and writes nothing.
    std::size_t maximumSize = ~std::size_t{0};
    TCallLog* log = nullptr;

    void Close() override {
        Log("Close");
        ++closed;
    }
    std::uint32_t GetCapabilities() override { return capabilities; }
    std::int64_t GetLength() override { return static_cast<std::int64_t>(bytes.size()); }
    void Flush() override { Log("Flush"); }
    void Seek(std::int64_t newPosition) override {
        Log("Seek " + std::to_string(newPosition));
        position = newPosition;
    }
    std::int64_t Tell() override { return position; }
    void SetFormat(const TDataFormat* newFormat) override {
        Log("SetFormat");
        format.Set(newFormat ? *newFormat : GetEmptyFormat());
    }
    void Write(const void* buffer, std::uint64_t size) override {
        Log("Write " + std::to_string(size));
        const auto start = static_cast<std::size_t>(position);
        if (start > maximumSize || size > maximumSize - start) {
            Raise<CIOException>(streamfailures::kCannotWrite);
        }
        if (size == 0) return;
        const std::size_t end = start + static_cast<std::size_t>(size);
        if (bytes.size() < end) bytes.resize(end);
        std::memcpy(bytes.data() + start, buffer, static_cast<std::size_t>(size));
        position = static_cast<std::int64_t>(end);
    }

private:
    void Log(const std::string& call) {
        if (log) log->push_back(call);
    }

    CLiveObject live_;
};

} // namespace vorlund::test
