// The functions of Media Foundation that are used, found at run time: systems without it, such as the
// editions "N" of Windows, load the plug-in all the same.
#pragma once

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

class CMediaFoundation {
public:
    /// Loads and starts it.
    CMediaFoundation();
    CMediaFoundation(const CMediaFoundation&) = delete;
    CMediaFoundation& operator=(const CMediaFoundation&) = delete;
    ~CMediaFoundation();

    /// Whether all functions are there and it has been started.
    bool IsThere() const { return isStarted_; }

    /// `MFCreateMFByteStreamOnStream`, which headers of mingw-w64 do not declare.
    HRESULT(STDAPICALLTYPE* createByteStream)(IStream*, IMFByteStream**) = nullptr;
    decltype(&MFCreateMediaType) createMediaType = nullptr;
    decltype(&MFCreateSourceReaderFromByteStream) createReader = nullptr;

private:
    HMODULE platform_ = nullptr;
    HMODULE reader_ = nullptr;
    decltype(&MFShutdown) shutdown_ = nullptr;
    bool isStarted_ = false;
};
