/// \file
/// The stream under a decoder, seen from below: it notes every call and fails where it is told to.
#pragma once

#include "support/Streams.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {

/// Raises with texts that no decoder has.
template <class TException> void RaiseFromStream() {
    throw TException(VRL_L("test::CRecordingStream"), VRL_L("tests/filters/RecordingStream"), 7,
                     VRL_L("on request"));
}

/// Bytes in memory; every call that a decoder makes is in the log.
class CRecordingStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0xA2A1EF7F, 0x5E2D4C7B, 0x9C6D3F5A, 0x1B0E7C21};

    static CRefPtr<CRecordingStream> Create(TBytes content = {}) {
        auto stream = Make<CRecordingStream>();
        stream->bytes = std::move(content);
        stream->capabilities = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
        return stream;
    }

    /// The most bytes that one `Read` delivers.
    std::uint64_t mostPerRead = std::numeric_limits<std::uint64_t>::max();
    /// Makes `Tell` claim to be further on, as in a file too large for a test.
    std::int64_t tellShift = 0;
    /// The call with this number, counted from 0, does `fault` instead.
    int faultyCall = -1;
    std::function<void()> fault = &RaiseFromStream<CIOException>;
    int callCount = 0;

    int GetReferences() const { return references_; }
    /// The calls since the last time, and forgets them.
    TCallLog TakeCalls() { return std::exchange(calls_, {}); }

    void Close() override { Note("Close"); }
    std::uint32_t GetCapabilities() override {
        Note("GetCapabilities");
        return capabilities;
    }
    std::int64_t GetLength() override {
        Note("GetLength");
        return CMemoryInputStream::GetLength();
    }
    void Flush() override { Note("Flush"); }
    void Seek(std::int64_t target) override {
        Note("Seek " + std::to_string(target));
        CMemoryInputStream::Seek(target);
    }
    std::int64_t Tell() override {
        Note("Tell");
        return position + tellShift;
    }
    bool Eof() override {
        Note("Eof");
        return CMemoryInputStream::Eof();
    }
    const TDataFormat& GetFormat() override {
        Note("GetFormat");
        return CMemoryInputStream::GetFormat();
    }
    void Read(IMediaSample*) override { Note("Read sample"); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        Note("Read " + std::to_string(size));
        return CMemoryInputStream::Read(buffer, std::min(size, mostPerRead));
    }
    bool SupportsMediaSamples(std::uint32_t) override {
        Note("SupportsMediaSamples");
        return true;
    }
    void Skip(std::uint64_t count) override {
        Note("Skip " + std::to_string(count));
        CMemoryInputStream::Skip(count);
    }

private:
    void Note(std::string call) {
        calls_.push_back(std::move(call));
        if (callCount++ == faultyCall) fault();
    }

    TCallLog calls_;
};

} // namespace vorlund::test
