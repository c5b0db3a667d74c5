// The source reader of Media Foundation for one sound. Each of its calls may take as long as the system
// likes, and all of them are made by one thread.
#pragma once

#include "FileCopy.h"
#include "MediaFoundation.h"

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

/// Why there is no sound.
struct TMediaFailure {
    enum class TKind {
        NoSystem,  ///< Media Foundation is not there
        NoDecoder, ///< it has no decoder for the file
        Failed     ///< it failed while it decoded
    };
    TKind kind;
    HRESULT result;
};

/// A COM object with one reference of its own.
template <class TObject> class CComPtr {
public:
    CComPtr() = default;
    CComPtr(const CComPtr&) = delete;
    CComPtr& operator=(const CComPtr&) = delete;
    ~CComPtr() {
        if (object_) object_->Release();
    }

    TObject** Fill() { return &object_; }
    TObject* Get() const { return object_; }
    TObject* operator->() const { return object_; }

private:
    TObject* object_ = nullptr;
};

class CMediaReader {
public:
    /// Raises `TMediaFailure`, as `Fetch` does. The thread has joined COM.
    explicit CMediaReader(std::shared_ptr<const CFileCopy> file);

    const vorlund::TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// The next bytes, perhaps none; false at the end.
    bool Fetch(std::vector<std::uint8_t>& piece);

private:
    void Choose(const GUID& kind, UINT32 bits, std::uint32_t sampleFormat);

    std::shared_ptr<const CFileCopy> file_;
    CMediaFoundation media_;
    // They go before what made them.
    CComPtr<IMFByteStream> bytes_;
    CComPtr<IMFSourceReader> reader_;
    vorlund::TDataFormat_AudioPcm format_;
};
