// Resources and their streams when memory runs out.
#include "data/resource/ForeignResource.h"
#include "data/resource/ResourceTest.h"
#include "support/Failures.h"
#include "support/RefuseEachAllocation.h"

#include <vorlund/StreamFilter.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

constexpr TFailure kCannotCopy{VRL_L("vorlund::CAppendingRos::Write"),
                               VRL_L("src/vorlund/data/resource/AppendingRos"), 118, VRL_L("malloc failed")};

class ResourceOutOfMemory : public CResourceTest {
protected:
    ResourceOutOfMemory() { SetBytes(*resource_, Ramp(100)); }

    void ExpectUnchanged() {
        EXPECT_EQ(BytesOf(*resource_), Ramp(100));
        EXPECT_EQ(resource_->GetFormat()->size, 20U);
        EXPECT_TRUE(IsUnlocked(*resource_));
        EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    }
};

TEST_F(ResourceOutOfMemory, Creation) {
    EXPECT_GE(RefuseEachAllocation([] { CreateAs<IResource>(classid::CResource).Reset(); }, [] {}), 2U);
}

TEST_F(ResourceOutOfMemory, SizeWithoutMemoryHasNoData) {
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->SetSize(500); },
                                   [&](TRefusal refusal) {
                                       EXPECT_EQ(refusal, TRefusal::Survived);
                                       EXPECT_EQ(resource_->GetSize(), 500U);
                                       EXPECT_EQ(BytesOf(*resource_), TBytes());
                                   }),
              1U);
    EXPECT_NE(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
}

TEST_F(ResourceOutOfMemory, LoadWithoutMemoryLeavesNothing) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = Ramp(500);
    const CInputStreamSelector selector(source.Get());
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->Load(selector); },
                                   [&](TRefusal refusal) {
                                       EXPECT_EQ(refusal, TRefusal::Survived);
                                       EXPECT_EQ(resource_->GetSize(), 0U);
                                       EXPECT_TRUE(IsUnlocked(*resource_));
                                       EXPECT_EQ(source->position, 0);
                                   }),
              1U);
    EXPECT_EQ(BytesOf(*resource_), Ramp(500));
}

TEST_F(ResourceOutOfMemory, Filter) {
    const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    EXPECT_GE(RefuseEachAllocation([&] { resource_->ApplyFilter(filter.Get()); },
                                   [&](TRefusal refusal) {
                                       // A block that cannot be cut to size stays as it is.
                                       if (refusal != TRefusal::Survived) ExpectUnchanged();
                                   }),
              3U);
    EXPECT_EQ(BytesOf(*resource_), Ramp(100));
}

TEST_F(ResourceOutOfMemory, Format) {
    const TDataFormat_AudioPcm format(1, 2, 44100);
    EXPECT_EQ(RefuseEachAllocation([&] { resource_->SetFormat(&format); }, [&] { ExpectUnchanged(); }), 1U);
    EXPECT_EQ(resource_->GetFormat()->size, 32U);
}

TEST_F(ResourceOutOfMemory, GrowingTriesForLessBeforeItFails) {
    const auto stream = CreateAs<IResourceOs>(classid::CResourceOs);
    stream->SetResource(resource_.Get());
    stream->Seek(100);
    const std::uint8_t byte = 1;
    // The generous block alone may be refused.
    EXPECT_EQ(RefuseEachAllocation([&] { stream->Write(&byte, 1); },
                                   [&](TRefusal refusal) { EXPECT_EQ(refusal, TRefusal::Survived); }),
              1U);
    EXPECT_EQ(resource_->GetSize(), 102U);
}

TEST_F(ResourceOutOfMemory, ForeignResourceWithoutRoomForACopy) {
    const auto foreign = Make<CForeignResource>();
    foreign->bytes = Ramp(4);
    foreign->locks.reserve(100);
    foreign->locksTaken.reserve(100);
    const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
    stream->SetResource(foreign.Get());
    const std::uint8_t byte = 9;
    // The first allocation is the stream's own, the others are the foreign resource's.
    ExpectRaises<COutOfMemoryException>(kCannotCopy, [&] {
        const CAllocationFailure failure(0);
        stream->Write(&byte, 1);
    });
    EXPECT_EQ(foreign->bytes, Ramp(4));
    EXPECT_TRUE(foreign->locks.empty());
}

TEST_F(ResourceOutOfMemory, CreationOfStreams) {
    for (const CId& id : {classid::CResourceIs, classid::CResourceOs, classid::CAppendingRos})
        EXPECT_EQ(RefuseEachAllocation([&] { CreateAs<IObject>(id).Reset(); }, [] {}), 1U);
}

} // namespace
} // namespace vorlund::test
