#include "vorlund/data/base/BufferedOutput.h"
#include "vorlund/data/base/ReadErrorSource.h"
#include "vorlund/data/base/StreamChain.h"
#include "vorlund/data/file/FileInputStream.h"
#include "vorlund/data/file/FileOutputStream.h"

#include <vorlund/RefPtr.h>
#include <vorlund/StreamErrors.h>

#include <cstddef>

namespace vorlund {
namespace {

/// The stream at the end of the chain that begins with `stream`, when it is a `TFile`, the library's own
/// class; else empty.
template <class TFile, class TStream> CRefPtr<TFile> FindFile(TStream& stream) {
    const auto end = EndOfChain(stream);
    // The identifier alone is not enough: applications may register a class of their own under it.
    if (end->GetClassId() != TFile::ClassId) return {};
    return CRefPtr<TFile>::Share(dynamic_cast<TFile*>(end.Get()));
}

CRefPtr<CFileOutputStream> FindOutputFile(IOutputStream& stream) {
    return FindFile<CFileOutputStream>(stream);
}

} // namespace

std::uint32_t GetReadError(IInputStream& stream) {
    if (const auto file = FindFile<CFileInputStream>(stream)) return file->GetReadError();
    const auto end = EndOfChain(stream);
    const auto* const source = dynamic_cast<const CReadErrorSource*>(end.Get());
    return source ? source->GetReadError() : 0;
}

std::uint32_t GetWriteError(IOutputStream& stream) {
    const auto file = FindOutputFile(stream);
    return file ? file->GetWriteError() : 0;
}

bool WritesAtPosition(IOutputStream& stream) {
    const auto file = FindOutputFile(stream);
    return !file || file->WritesAtPosition();
}

void FlushOutput(IOutputStream& stream) {
    auto buffered = CRefPtr<IOutputStream>::Share(&stream);
    for (std::size_t i = 0; buffered && i < kMaxChain; ++i) {
        if (auto* const filter = dynamic_cast<CBufferedOutput*>(buffered.Get())) filter->WriteOut();
        buffered = NextInChain(buffered);
    }
    const auto file = FindOutputFile(stream);
    if (file && file->GetCapabilities() != 0) file->Flush();
}

void CloseOutput(IOutputStream& stream) {
    // Found before: a filter may let go of it when it is closed.
    const auto file = FindOutputFile(stream);
    stream.Close();
    if (file) file->RaiseWriteError();
}

} // namespace vorlund
