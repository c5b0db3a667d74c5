#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/File.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStreamSelector");
constexpr const wchar* kConstructor = VRL_L("vorlund::CInputStreamSelector::CInputStreamSelector");
constexpr TFailure kStreamIsNull{kConstructor, kFile, 39, VRL_L("Given input stream is NULL")};
constexpr TFailure kResourceIsNull{kConstructor, kFile, 46, VRL_L("Given resource is NULL")};
constexpr TFailure kNoResourceStream{kConstructor, kFile, 48, VRL_L("Cannot create resource input stream")};
constexpr TFailure kFileNameIsNull{kConstructor, kFile, 55, VRL_L("Given file name is NULL")};
constexpr TFailure kNoFileStream{kConstructor, kFile, 57, VRL_L("Cannot create file input stream")};
constexpr TFailure kNoVideoSource{kConstructor, kFile, 65, VRL_L("Cannot create callback video source")};

} // namespace

CInputStreamSelector::CInputStreamSelector(IInputStream* stream) {
    if (!stream) Raise<CNullPtrException>(kStreamIsNull);
    stream_ = CRefPtr<IInputStream>::Share(stream).Detach();
}

CInputStreamSelector::CInputStreamSelector(IResource* resource) {
    if (!resource) Raise<CNullPtrException>(kResourceIsNull);
    auto stream = CreateOrRaise<IResourceIs>(classid::CResourceIs, kNoResourceStream);
    stream->SetResource(resource);
    stream_ = stream.Detach();
}

CInputStreamSelector::CInputStreamSelector(const wchar* fileName) {
    if (!fileName) Raise<CNullPtrException>(kFileNameIsNull);
    auto file = CreateOrRaise<IFileInputStream>(classid::CFileInputStream, kNoFileStream);
    file->Open(fileName);
    stream_ = file.Detach();
}

CInputStreamSelector::CInputStreamSelector(ICbVideoSource::TCallback callback) {
    auto source = CreateOrRaise<ICbVideoSource>(classid::CCbVideoSource, kNoVideoSource);
    source->SetCallback(callback);
    stream_ = source.Detach();
}

CInputStreamSelector::CInputStreamSelector(const CInputStreamSelector& other)
    : stream_(other.GetInputStream()) {}

CInputStreamSelector& CInputStreamSelector::operator=(const CInputStreamSelector& other) {
    // The new reference comes first: `other` may be this selector.
    auto former = CRefPtr<IInputStream>::Adopt(std::exchange(stream_, other.GetInputStream()));
    former.Reset();
    return *this;
}

CInputStreamSelector::~CInputStreamSelector() noexcept(false) {
    ReleaseInDestructor(stream_);
}

IInputStream* CInputStreamSelector::GetInputStream() const {
    return CRefPtr<IInputStream>::Share(stream_).Detach();
}

IInputStream* CInputStreamSelector::DecodeStream(const CId& wanted) const {
    return services::CodecClassStore().DecodeStream(stream_, wanted);
}

IInputStream* CInputStreamSelector::DecodeStream(const CId& wanted, const TDecoderChoice& choice) const {
    return services::CodecClassStore().DecodeStream(stream_, wanted, choice);
}

} // namespace vorlund
