// The output stream selector.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <type_traits>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/OutputStreamSelector");
constexpr TFailure kNoResourceStream{VRL_L("vorlund::COutputStreamSelector::COutputStreamSelector"), kFile,
                                     44, VRL_L("Cannot create resource output stream")};
constexpr TFailure kNoFileStream{VRL_L("vorlund::COutputStreamSelector::COutputStreamSelector"), kFile, 56,
                                 VRL_L("Cannot create file output stream")};
constexpr TFailure kNothingToEncode{VRL_L("vorlund::COutputStreamSelector::EncodeStream"), kFile, 97,
                                    VRL_L("Stream pointer is NULL")};

class OutputStreamSelector : public testing::Test {
protected:
    ~OutputStreamSelector() noexcept override { EXPECT_EQ(CLiveObject::GetCount(), before_); }

    CTemporaryFolder folder_;
    CWorkingFolder working_{folder_.GetPath()};
    CLibraryScope library_;
    int before_ = CLiveObject::GetCount();
};

TEST_F(OutputStreamSelector, HoldsOneReference) {
    const auto stream = Make<CMemoryOutputStream>();
    {
        const COutputStreamSelector selector(stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
        EXPECT_EQ(selector.GetOutputStreamTmp(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
        const auto held = CRefPtr<IOutputStream>::Adopt(selector.GetOutputStream());
        EXPECT_EQ(held.Get(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(OutputStreamSelector, NullStreamShowsOnlyWhenItIsUsed) {
    const COutputStreamSelector selector(static_cast<IOutputStream*>(nullptr));
    EXPECT_EQ(selector.GetOutputStream(), nullptr);
    EXPECT_EQ(selector.GetOutputStreamTmp(), nullptr);
    ExpectRaises<CNullPtrException>(kNothingToEncode, [&] { selector.EncodeStream(nullptr, nullptr); });
    const COutputStreamSelector copy(selector);
    EXPECT_EQ(copy.GetOutputStreamTmp(), nullptr);
    ExpectRaises<CNullPtrException>(kNothingToEncode,
                                    [&] { copy.EncodeStream(&GetEmptyFormat(), &GetEmptyFormat()); });
}

TEST_F(OutputStreamSelector, EncodingGivesNull) {
    const auto stream = Make<CMemoryOutputStream>();
    const COutputStreamSelector selector(stream.Get());
    EXPECT_EQ(selector.EncodeStream(nullptr, nullptr), nullptr);
    EXPECT_EQ(selector.EncodeStream(&GetEmptyFormat(), &TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO),
              nullptr);
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
}

TEST_F(OutputStreamSelector, CopiesShareTheStream) {
    const auto stream = Make<CMemoryOutputStream>();
    const COutputStreamSelector selector(stream.Get());
    {
        const COutputStreamSelector copy(selector);
        EXPECT_EQ(copy.GetOutputStreamTmp(), stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
}

TEST_F(OutputStreamSelector, AssignmentReleasesTheFormerStream) {
    const auto first = Make<CMemoryOutputStream>();
    const auto second = Make<CMemoryOutputStream>();
    COutputStreamSelector target(first.Get());
    const COutputStreamSelector source(second.Get());
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.GetOutputStreamTmp(), second.Get());
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(ReferencesOf(second.Get()), 3);
    target = COutputStreamSelector(static_cast<IOutputStream*>(nullptr));
    EXPECT_EQ(target.GetOutputStreamTmp(), nullptr);
    EXPECT_EQ(ReferencesOf(second.Get()), 2);
    target = source;
    EXPECT_EQ(ReferencesOf(second.Get()), 3);
}

TEST_F(OutputStreamSelector, SelfAssignmentKeepsTheStream) {
    auto stream = Make<CMemoryOutputStream>();
    COutputStreamSelector selector(stream.Get());
    stream.Reset();
    const COutputStreamSelector& same = selector;
    selector = same;
    EXPECT_EQ(ReferencesOf(selector.GetOutputStreamTmp()), 1);
}

TEST_F(OutputStreamSelector, OpensAnEmptyFileThroughTheClassStore) {
    for (const char* const text : {"first, the longer text", "second"}) {
        const int number = CreateAs<IObject>(classid::CObject)->GetObjectNumber();
        {
            const COutputStreamSelector selector(VRL_L("OutputStreamSelector.tmp"));
            IOutputStream* const stream = selector.GetOutputStreamTmp();
            EXPECT_EQ(stream->GetClassId(), classid::CFileOutputStream);
            EXPECT_EQ(stream->GetObjectNumber(), number + 1);
            EXPECT_EQ(ReferencesOf(stream), 1);
            stream->Write(text, std::char_traits<char>::length(text));
        }
        std::ifstream file("OutputStreamSelector.tmp", std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), text);
    }
    EXPECT_EQ(std::remove("OutputStreamSelector.tmp"), 0);
}

TEST_F(OutputStreamSelector, FailedOpenPassesOn) {
    const wchar* const path = VRL_L("no/such/file");
    ExpectRaisesFor<CFileAccessException>(path, filefailures::kCannotWrite,
                                          [&] { const COutputStreamSelector selector(path); });
}

IObject* NoObject() {
    return nullptr;
}

TEST_F(OutputStreamSelector, FileStreamClassThatYieldsNoFileStreamIsRefused) {
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({classid::CFileOutputStream, VRL_L("test::NoObject"), &NoObject});
    ExpectRaises<CBugException>(kNoFileStream, [] { const COutputStreamSelector selector(VRL_L("any")); });
}

TEST_F(OutputStreamSelector, NullResourceLeavesItEmpty) {
    const COutputStreamSelector selector(static_cast<IResource*>(nullptr));
    EXPECT_EQ(selector.GetOutputStreamTmp(), nullptr);
    EXPECT_EQ(selector.GetOutputStream(), nullptr);
}

TEST_F(OutputStreamSelector, WritesIntoAResource) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    {
        const COutputStreamSelector selector(resource.Get());
        EXPECT_EQ(ReferencesOf(resource.Get()), 2);
        IOutputStream* const stream = selector.GetOutputStreamTmp();
        EXPECT_EQ(stream->GetClassId(), classid::CResourceOs);
        EXPECT_EQ(stream->GetObjectNumber(), resource->GetObjectNumber() + 1);
        EXPECT_EQ(ReferencesOf(stream), 1);
        stream->Write("abc", 3);
        EXPECT_EQ(resource->GetSize(), 3U);
    }
    EXPECT_EQ(ReferencesOf(resource.Get()), 1);
}

TEST_F(OutputStreamSelector, ResourceStreamClassOfAnotherKindIsRefused) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(
        {classid::CResourceOs, VRL_L("test::CMemoryOutputStream"), &NewObject<CMemoryOutputStream>});
    ExpectRaises<CBugException>(kNoResourceStream,
                                [&] { const COutputStreamSelector selector(resource.Get()); });
    EXPECT_EQ(ReferencesOf(resource.Get()), 1);
}

// What a literal null would mean is not clear, so it is not taken; everything that is known is.
static_assert(!std::is_constructible_v<COutputStreamSelector, std::nullptr_t>);
static_assert(std::is_constructible_v<COutputStreamSelector, IAppendingRos*> &&
              std::is_constructible_v<COutputStreamSelector, IResource*> &&
              std::is_constructible_v<COutputStreamSelector, const wchar*>);

} // namespace
} // namespace vorlund::test
