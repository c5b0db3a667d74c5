#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/File.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/OutputStreamSelector");
constexpr const wchar* kConstructor = VRL_L("vorlund::COutputStreamSelector::COutputStreamSelector");
constexpr TFailure kNoResourceStream{kConstructor, kFile, 44, VRL_L("Cannot create resource output stream")};
constexpr TFailure kNoFileStream{kConstructor, kFile, 56, VRL_L("Cannot create file output stream")};
constexpr TFailure kNothingToEncode{VRL_L("vorlund::COutputStreamSelector::EncodeStream"), kFile, 97,
                                    VRL_L("Stream pointer is NULL")};

} // namespace

// Kept for callers: null is accepted, unlike in the input selector, and raises only when it is used.
COutputStreamSelector::COutputStreamSelector(IOutputStream* stream)
    : stream_(CRefPtr<IOutputStream>::Share(stream).Detach()) {}

COutputStreamSelector::COutputStreamSelector(IResource* resource) {
    if (!resource) return;
    auto stream = CreateOrRaise<IResourceOs>(classid::CResourceOs, kNoResourceStream);
    stream->SetResource(resource);
    stream_ = stream.Detach();
}

COutputStreamSelector::COutputStreamSelector(const wchar* fileName) {
    auto file = CreateOrRaise<IFileOutputStream>(classid::CFileOutputStream, kNoFileStream);
    file->Open(fileName, false);
    stream_ = file.Detach();
}

COutputStreamSelector::COutputStreamSelector(const COutputStreamSelector& other)
    : stream_(other.GetOutputStream()) {}

COutputStreamSelector& COutputStreamSelector::operator=(const COutputStreamSelector& other) {
    // The new reference comes first: `other` may be this selector.
    auto former = CRefPtr<IOutputStream>::Adopt(std::exchange(stream_, other.GetOutputStream()));
    former.Reset();
    return *this;
}

COutputStreamSelector::~COutputStreamSelector() noexcept(false) {
    ReleaseInDestructor(stream_);
}

IOutputStream* COutputStreamSelector::GetOutputStream() const {
    return CRefPtr<IOutputStream>::Share(stream_).Detach();
}

IOutputStream* COutputStreamSelector::EncodeStream(const TDataFormat* from, const TDataFormat* to) const {
    if (!stream_) Raise<CNullPtrException>(kNothingToEncode);
    return services::CodecClassStore().EncodeStream(stream_, from, to);
}

} // namespace vorlund
