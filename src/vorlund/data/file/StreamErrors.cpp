#include "vorlund/data/file/FileInputStream.h"
#include "vorlund/data/file/FileOutputStream.h"

#include <vorlund/RefPtr.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/StreamFilter.h>

#include <utility>

namespace vorlund {
namespace {

/// More filters than this follow each other only in a ring, which has no end.
constexpr int kMaxFilters = 1000;

IInputStream* NextOf(IInputStreamFilter& filter) {
    return filter.GetInputStream();
}
IOutputStream* NextOf(IOutputStreamFilter& filter) {
    return filter.GetOutputStream();
}

/// The stream at the end of the chain that begins with `stream`, when it is a `TFile`, the library's own
/// class; else empty.
template <class TFile, class TFilter, class TStream> CRefPtr<TFile> FindFile(TStream& stream) {
    auto end = CRefPtr<TStream>::Share(&stream);
    for (int i = 0; i < kMaxFilters; ++i) {
        const auto filter = end.template Query<TFilter>();
        auto next = CRefPtr<TStream>::Adopt(filter ? NextOf(*filter) : nullptr);
        if (!next) break;
        end = std::move(next);
    }
    // The identifier alone is not enough: applications may register a class of their own under it.
    if (end->GetClassId() != TFile::ClassId) return {};
    return CRefPtr<TFile>::Share(dynamic_cast<TFile*>(end.Get()));
}

CRefPtr<CFileOutputStream> FindOutputFile(IOutputStream& stream) {
    return FindFile<CFileOutputStream, IOutputStreamFilter>(stream);
}

} // namespace

std::uint32_t GetReadError(IInputStream& stream) {
    const auto file = FindFile<CFileInputStream, IInputStreamFilter>(stream);
    return file ? file->GetReadError() : 0;
}

std::uint32_t GetWriteError(IOutputStream& stream) {
    const auto file = FindOutputFile(stream);
    return file ? file->GetWriteError() : 0;
}

void FlushOutput(IOutputStream& stream) {
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
