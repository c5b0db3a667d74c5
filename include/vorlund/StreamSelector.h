/// \file
/// Selectors: small values that make a stream from a stream, a resource, a file name or a callback, and give
/// access to decoding. One thread at a time.
#pragma once

#include <vorlund/CbVideoSource.h>
#include <vorlund/Platform.h>

namespace vorlund {

class IResource;
struct TDecoderChoice;

/// Holds one reference to an input stream; copies share it.
///
/// \code{.cpp}
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// CFrameReader sound(CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId)));
/// std::printf("%.2f seconds\n", sound.GetSeconds()); // prints 4.60 seconds
/// \endcode
class VRL_API CInputStreamSelector {
public:
    /// Holds `stream` and adds a reference. Raises `CNullPtrException` "Given input stream is NULL".
    CInputStreamSelector(IInputStream* stream);
    /// Holds a new resource input stream bound to `resource`. Raises `CNullPtrException` "Given resource is
    /// NULL", and `CBugException` "Cannot create resource input stream" when that class was replaced by one
    /// of another kind.
    CInputStreamSelector(IResource* resource);
    /// Holds a new file input stream opened on `fileName`. Raises `CNullPtrException` "Given file name is
    /// NULL", `CFileAccessException` "Cannot open '...' for reading", and `CBugException` "Cannot create file
    /// input stream" when that class was replaced by one of another kind.
    CInputStreamSelector(const wchar* fileName);
    /// Holds a new callback video source that calls `callback`. Raises `CBugException` "Cannot create
    /// callback video source" when that class was replaced by one of another kind.
    CInputStreamSelector(ICbVideoSource::TCallback callback);
    CInputStreamSelector(const CInputStreamSelector& other);
    CInputStreamSelector& operator=(const CInputStreamSelector& other);
    /// Releases the stream; may raise what the stream's destruction raises.
    ~CInputStreamSelector() noexcept(false);

    /// The stream, with one reference for the caller.
    IInputStream* GetInputStream() const;
    /// The stream without a reference, valid while the selector lives.
    IInputStream* GetInputStreamTmp() const { return stream_; }
    /// `v`'s codec class store's `DecodeStream` of the held stream, with its result (one reference for the
    /// caller) and its failures.
    IInputStream* DecodeStream(const CId& wanted) const;
    /// The same with a choice of decoders and a report (DecodeReport.h). Since version 0.1.
    IInputStream* DecodeStream(const CId& wanted, const TDecoderChoice& choice) const;

private:
    IInputStream* stream_ = nullptr;
};

/// Holds one reference to an output stream, or nothing; copies share it.
///
/// \code{.cpp}
/// const COutputStreamSelector file(VRL_L("three.bin"));
/// WriteValues(*file.GetOutputStreamTmp(), std::vector<std::uint16_t>{1, 2, 3});
/// CloseOutput(*file.GetOutputStreamTmp()); // raises when not all of it has reached the file
/// \endcode
class VRL_API COutputStreamSelector {
public:
    /// Holds `stream` and adds a reference. Null is accepted, unlike in the input selector, and leaves it
    /// empty.
    COutputStreamSelector(IOutputStream* stream);
    /// Holds a new resource output stream bound to `resource`, which writes over its bytes from the first one
    /// on; null leaves the selector empty. Raises `CBugException` "Cannot create resource output stream" when
    /// that class was replaced by one of another kind.
    COutputStreamSelector(IResource* resource);
    /// Holds a new file output stream opened on `fileName`, which is truncated. Raises `CFileAccessException`
    /// "Cannot open '...' for writing", and `CBugException` "Cannot create file output stream" when that
    /// class was replaced by one of another kind.
    COutputStreamSelector(const wchar* fileName);
    COutputStreamSelector(const COutputStreamSelector& other);
    COutputStreamSelector& operator=(const COutputStreamSelector& other);
    /// Releases the stream; may raise what the stream's destruction raises.
    ~COutputStreamSelector() noexcept(false);

    /// The stream, with one reference for the caller, or null.
    IOutputStream* GetOutputStream() const;
    /// The stream without a reference, valid while the selector lives, or null.
    IOutputStream* GetOutputStreamTmp() const { return stream_; }
    /// `v`'s codec class store's `EncodeStream`, which gives null. Raises `CNullPtrException` "Stream pointer
    /// is NULL" when the selector is empty.
    IOutputStream* EncodeStream(const TDataFormat* from, const TDataFormat* to) const;

private:
    IOutputStream* stream_ = nullptr;
};

} // namespace vorlund
