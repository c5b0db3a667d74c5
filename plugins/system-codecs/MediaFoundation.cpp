#include "MediaFoundation.h"

namespace {

/// From the system's folder alone.
HMODULE Load(const wchar_t* name) {
    return LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

template <class TFunction> void Find(HMODULE library, const char* name, TFunction& function) {
    function = library ? reinterpret_cast<TFunction>(reinterpret_cast<void*>(GetProcAddress(library, name)))
                       : nullptr;
}

} // namespace

CMediaFoundation::CMediaFoundation() : platform_(Load(L"mfplat.dll")), reader_(Load(L"mfreadwrite.dll")) {
    decltype(&MFStartup) startup = nullptr;
    Find(platform_, "MFStartup", startup);
    Find(platform_, "MFShutdown", shutdown_);
    Find(platform_, "MFCreateMFByteStreamOnStream", createByteStream);
    Find(platform_, "MFCreateMediaType", createMediaType);
    Find(reader_, "MFCreateSourceReaderFromByteStream", createReader);
    if (startup && shutdown_ && createByteStream && createMediaType && createReader)
        isStarted_ = SUCCEEDED(startup(MF_VERSION, MFSTARTUP_LITE));
}

CMediaFoundation::~CMediaFoundation() {
    if (isStarted_) shutdown_();
    if (reader_) FreeLibrary(reader_);
    if (platform_) FreeLibrary(platform_);
}
