/// \file
/// What a hostile process of isolated decoders may say: the input is all of it. Whatever comes, the search
/// ends with a stream or one of its failures, a stream holds what was promised of it, and nothing is left.
#include "FuzzInput.h"
#include "WavFuzz.h"

#include "vorlund/api/plugins/ChildProcess.h"

#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>
#include <vorlund/IsolatedDecoder.h>
#include <vorlund/Stream.h>

#include <algorithm>
#include <cstring>
#include <span>

namespace {

/// What the process still says.
std::span<const std::uint8_t> words;

} // namespace

// In place of the library's own: a process that says those words and ends.
namespace vorlund {

struct CChildProcess::TState {};

CChildProcess::CChildProcess(const wchar*, const std::vector<wstring>&) {}
CChildProcess::~CChildProcess() = default;

bool CChildProcess::IsStarted() const {
    return true;
}

std::int32_t CChildProcess::GetError() const {
    return 0;
}

std::size_t CChildProcess::Read(void* buffer, std::size_t size) {
    // In pieces, as it comes from a process.
    const std::size_t count = std::min({size, words.size(), std::size_t{1000}});
    if (count > 0) std::memcpy(buffer, words.data(), count);
    words = words.subspan(count);
    return count;
}

bool CChildProcess::Write(const void*, std::size_t, TClock::time_point) {
    return true;
}

void CChildProcess::Wait() {}

bool CChildProcess::HasEnded() {
    return words.empty();
}

std::int32_t CChildProcess::GetEnd() const {
    return 0;
}

} // namespace vorlund

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

/// Of all that the report tells, nothing is a command for a terminal.
void CheckReport(const CDecodeReport& report) {
    for (const TDecodeEntry& entry : report.GetEntries()) {
        Check(entry.depth >= 0 && entry.outcome <= DECODE_DIED);
        for (const CString& text :
             {entry.className, entry.method, entry.reason, entry.container, entry.values, entry.remarks})
            for (const wchar* unit = text.GetBuffer(); *unit; ++unit) Check(*unit >= 0x20);
    }
    static_cast<void>(report.ToString());
    static_cast<void>(report.Explain());
}

void Use(IInputStream& stream) {
    const TDataFormat& format = stream.GetFormat();
    Check(format.id == TDataFormat_AudioPcm::FormatId && format.size == sizeof(TDataFormat_AudioPcm));
    const auto& pcm = static_cast<const TDataFormat_AudioPcm&>(format);
    Check(pcm.channels > 0 && pcm.samplesPerSec > 0 && pcm.GetBlockSize() > 0);
    std::uint8_t bytes[5000];
    try {
        for (int i = 0; i < 100; ++i) {
            const std::uint64_t count = stream.Read(bytes, sizeof(bytes));
            Check(count <= sizeof(bytes));
            if (count == 0) break;
            if ((bytes[0] & 1) != 0) stream.Seek(bytes[1] * 1000);
        }
        Check(stream.GetLength() >= 0);
    } catch (const CIOException&) {
    } catch (const COperationNotSupportedException&) {
        // It has no positions, or no length.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    words = {data, size};
    const auto source = CFuzzStream::Create(data, size);
    CDecodeReport report;
    try {
        const auto stream = CRefPtr<IInputStream>::Adopt(
            DecodeIsolated(source.Get(), TDataFormat_AudioPcm::FormatId, {.report = &report}));
        Use(*stream);
    } catch (const CDataFormatException&) {
    } catch (const CFailedException&) {
        // It may say that the system does not isolate it.
    }
    CheckReport(report);
    Check(source->GetReferences() == 1);
    return 0;
}
