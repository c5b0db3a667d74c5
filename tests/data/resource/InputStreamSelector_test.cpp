// The input stream selector.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>

#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"
#include "support/TestDecoders.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <type_traits>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/InputStreamSelector");
constexpr const wchar* kConstructor = VRL_L("vorlund::CInputStreamSelector::CInputStreamSelector");
constexpr TFailure kStreamIsNull{kConstructor, kFile, 39, VRL_L("Given input stream is NULL")};
constexpr TFailure kResourceIsNull{kConstructor, kFile, 46, VRL_L("Given resource is NULL")};
constexpr TFailure kNoResourceStream{kConstructor, kFile, 48, VRL_L("Cannot create resource input stream")};
constexpr TFailure kFileNameIsNull{kConstructor, kFile, 55, VRL_L("Given file name is NULL")};
constexpr TFailure kNoFileStream{kConstructor, kFile, 57, VRL_L("Cannot create file input stream")};
constexpr TFailure kNoVideoSource{kConstructor, kFile, 65, VRL_L("Cannot create callback video source")};

class InputStreamSelector : public testing::Test {
protected:
    ~InputStreamSelector() noexcept override { EXPECT_EQ(CLiveObject::GetCount(), before_); }

    CTemporaryFolder folder_;
    CWorkingFolder working_{folder_.GetPath()};
    CLibraryScope library_;
    int before_ = CLiveObject::GetCount();
};

TEST_F(InputStreamSelector, HoldsOneReference) {
    const auto stream = Make<CMemoryInputStream>();
    {
        const CInputStreamSelector selector(stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
        EXPECT_EQ(selector.GetInputStreamTmp(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
        const auto held = CRefPtr<IInputStream>::Adopt(selector.GetInputStream());
        EXPECT_EQ(held.Get(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(InputStreamSelector, KeepsItsStreamAlive) {
    auto stream = Make<CMemoryInputStream>();
    stream->bytes = {42};
    const CInputStreamSelector selector(stream.Get());
    stream.Reset();
    EXPECT_EQ(selector.GetInputStreamTmp()->GetLength(), 1);
    EXPECT_EQ(ReferencesOf(selector.GetInputStreamTmp()), 1);
}

TEST_F(InputStreamSelector, NullStreamIsRefused) {
    ExpectRaises<CNullPtrException>(
        kStreamIsNull, [] { const CInputStreamSelector selector(static_cast<IInputStream*>(nullptr)); });
}

TEST_F(InputStreamSelector, CopiesShareTheStream) {
    const auto stream = Make<CMemoryInputStream>();
    const CInputStreamSelector selector(stream.Get());
    {
        const CInputStreamSelector copy(selector);
        EXPECT_EQ(copy.GetInputStreamTmp(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    EXPECT_EQ(selector.GetInputStreamTmp(), stream.Get());
}

TEST_F(InputStreamSelector, AssignmentReleasesTheFormerStream) {
    const auto first = Make<CMemoryInputStream>();
    const auto second = Make<CMemoryInputStream>();
    CInputStreamSelector target(first.Get());
    const CInputStreamSelector source(second.Get());
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.GetInputStreamTmp(), second.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(ReferencesOf(second.Get()), 3);
}

TEST_F(InputStreamSelector, SelfAssignmentKeepsTheStream) {
    auto stream = Make<CMemoryInputStream>();
    CInputStreamSelector selector(stream.Get());
    stream.Reset();
    const CInputStreamSelector& same = selector;
    selector = same;
    EXPECT_EQ(ReferencesOf(selector.GetInputStreamTmp()), 1);
    const CInputStreamSelector copy(selector);
    selector = copy;
    EXPECT_EQ(ReferencesOf(selector.GetInputStreamTmp()), 2);
}

// Resources.

TEST_F(InputStreamSelector, NullResourceIsRefused) {
    ExpectRaises<CNullPtrException>(
        kResourceIsNull, [] { const CInputStreamSelector selector(static_cast<IResource*>(nullptr)); });
}

TEST_F(InputStreamSelector, ReadsAResource) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    resource->SetSize(3);
    resource->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    {
        const CInputStreamSelector selector(resource.Get());
        EXPECT_EQ(ReferencesOf(resource.Get()), 2);
        IInputStream* const stream = selector.GetInputStreamTmp();
        EXPECT_EQ(stream->GetClassId(), classid::CResourceIs);
        EXPECT_EQ(stream->GetObjectNumber(), resource->GetObjectNumber() + 1);
        EXPECT_EQ(ReferencesOf(stream), 1);
        EXPECT_EQ(stream->GetLength(), 3);
        EXPECT_EQ(&stream->GetFormat(), resource->GetFormat());
        const auto same = CRefPtr<IInputStream>::Adopt(selector.DecodeStream(TDataFormat_AudioPcm::FormatId));
        EXPECT_EQ(same.Get(), stream);
    }
    EXPECT_EQ(ReferencesOf(resource.Get()), 1);
}

TEST_F(InputStreamSelector, ResourceStreamClassOfAnotherKindIsRefused) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(
        {classid::CResourceIs, VRL_L("test::CMemoryInputStream"), &NewObject<CMemoryInputStream>});
    ExpectRaises<CBugException>(kNoResourceStream,
                                [&] { const CInputStreamSelector selector(resource.Get()); });
    EXPECT_EQ(ReferencesOf(resource.Get()), 1);
}

// What a literal null would mean is not clear, so it is not taken; everything that is known is.
static_assert(!std::is_constructible_v<CInputStreamSelector, std::nullptr_t>);
static_assert(std::is_constructible_v<CInputStreamSelector, IResourceIs*> &&
              std::is_constructible_v<CInputStreamSelector, IResource*> &&
              std::is_constructible_v<CInputStreamSelector, const wchar*>);

// Decoding.

TEST_F(InputStreamSelector, DecodesThroughTheLibrarysStore) {
    CTestDecoders decoders;
    decoders.Register(v.GetCodecClassStore(), 0, {.accepts = TestFormat(1), .produces = TestFormat(2)});
    const auto stream = Make<CMemoryInputStream>();
    stream->format = HeadOnly(TestFormat(1));
    const CInputStreamSelector selector(stream.Get());

    const auto same = CRefPtr<IInputStream>::Adopt(selector.DecodeStream(TestFormat(1)));
    EXPECT_EQ(same.Get(), stream.Get());
    const auto decoded = CRefPtr<IInputStream>::Adopt(selector.DecodeStream(TestFormat(2)));
    EXPECT_EQ(decoded->GetClassId(), TestDecoderId(0));
    EXPECT_EQ(ReferencesOf(decoded.Get()), 1);
    EXPECT_EQ(ReferencesOf(stream.Get()), 4);
    ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream,
                                       [&] { selector.DecodeStream(TestFormat(3)); });
    EXPECT_EQ(ReferencesOf(stream.Get()), 4);
}

// File names.

TEST_F(InputStreamSelector, NullFileNameIsRefused) {
    ExpectRaises<CNullPtrException>(
        kFileNameIsNull, [] { const CInputStreamSelector selector(static_cast<const wchar*>(nullptr)); });
}

TEST_F(InputStreamSelector, OpensAFileThroughTheClassStore) {
    {
        std::ofstream file("InputStreamSelector.tmp", std::ios::binary);
        file << "hello";
    }
    const int number = CreateAs<IObject>(classid::CObject)->GetObjectNumber();
    {
        const CInputStreamSelector selector(VRL_L("InputStreamSelector.tmp"));
        IInputStream* const stream = selector.GetInputStreamTmp();
        EXPECT_EQ(stream->GetClassId(), classid::CFileInputStream);
        EXPECT_EQ(stream->GetObjectNumber(), number + 1);
        EXPECT_EQ(ReferencesOf(stream), 1);
        EXPECT_EQ(stream->GetLength(), 5);
        char buffer[6] = {};
        EXPECT_EQ(stream->Read(buffer, 6), 5U);
        EXPECT_STREQ(buffer, "hello");
    }
    EXPECT_EQ(std::remove("InputStreamSelector.tmp"), 0);
}

TEST_F(InputStreamSelector, FailedOpenPassesOn) {
    const wchar* const path = VRL_L("no/such/file");
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kCannotRead,
                                          [&] { const CInputStreamSelector selector(path); });
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(InputStreamSelector, FileStreamClassThatYieldsNoFileStreamIsRefused) {
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CFileInputStream, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(kNoFileStream, [] { const CInputStreamSelector selector(VRL_L("any")); });
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(
        {classid::CFileInputStream, VRL_L("test::CMemoryInputStream"), &NewObject<CMemoryInputStream>});
    ExpectRaises<CBugException>(kNoFileStream, [] { const CInputStreamSelector selector(VRL_L("any")); });
    v.GetClassStore().Clear();
    ExpectRaises<CClassNotFoundException>(classstorefailures::kCreateByIdNotFound,
                                          [] { const CInputStreamSelector selector(VRL_L("any")); });
}

// Video callbacks.

void PaintNothing(ICbVideoSource::TCbData&) {}

TEST_F(InputStreamSelector, VideoSourceClassThatYieldsNoVideoSourceIsRefused) {
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CCbVideoSource, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(kNoVideoSource, [] { const CInputStreamSelector selector(&PaintNothing); });
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(
        {classid::CCbVideoSource, VRL_L("test::CMemoryInputStream"), &NewObject<CMemoryInputStream>});
    ExpectRaises<CBugException>(kNoVideoSource, [] { const CInputStreamSelector selector(&PaintNothing); });
    v.GetClassStore().Clear();
    ExpectRaises<CClassNotFoundException>(classstorefailures::kCreateByIdNotFound,
                                          [] { const CInputStreamSelector selector(&PaintNothing); });
}

} // namespace
} // namespace vorlund::test
