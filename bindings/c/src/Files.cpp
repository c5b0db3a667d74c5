#include "Files.h"

#include "Failure.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamSelector.h>

#include <mutex>

namespace vorlund::capi {

namespace {

std::mutex openMutex;

template <class TOpen> auto OneAtATime(TOpen&& open) {
    const std::lock_guard lock(openMutex);
    try {
        return open();
    } catch (const CException&) {
        RecordFailure("");
        throw CRecorded();
    }
}

} // namespace

CRefPtr<IInputStream> OpenInputFile(const wstring& path) {
    return OneAtATime(
        [&] { return CRefPtr<IInputStream>::Adopt(CInputStreamSelector(path.c_str()).GetInputStream()); });
}

CRefPtr<IOutputStream> OpenOutputFile(const wstring& path) {
    return OneAtATime(
        [&] { return CRefPtr<IOutputStream>::Adopt(COutputStreamSelector(path.c_str()).GetOutputStream()); });
}

} // namespace vorlund::capi
