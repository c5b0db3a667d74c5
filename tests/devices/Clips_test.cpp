// Audio clips, video clips and bitmaps: each is the resource that it holds.
#include "data/resource/ForeignResource.h"
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <vorlund/Bitmap.h>
#include <vorlund/ClassStore.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

namespace vorlund::test {
namespace {

constexpr TFailure kNoResource{VRL_L("vorlund::CResourceHolder::GetResource"),
                               VRL_L("src/vorlund/devices/ResourceHolder"), 34,
                               VRL_L("Cannot create resource")};

struct TClipCase {
    const char* name;
    CId id;
};

class Clips : public CResourceTest, public testing::WithParamInterface<TClipCase> {
protected:
    ~Clips() noexcept override {}

    CRefPtr<IResource> clip_ = CreateAs<IResource>(GetParam().id);
};

TEST_P(Clips, MakeTheirResourceOnFirstUse) {
    const int number = clip_->GetObjectNumber();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), number + 1);
    EXPECT_EQ(clip_->GetSize(), 0U);
    // The resource took the number between.
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), number + 3);
    EXPECT_EQ(clip_->GetSize(), 0U);
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), number + 4);
}

TEST_P(Clips, AreEmptyAtFirst) {
    EXPECT_EQ(clip_->GetSize(), 0U);
    EXPECT_EQ(clip_->GetModificationCount(), 0U);
    EXPECT_EQ(clip_->GetFormat()->id, CId::Null());
    EXPECT_EQ(clip_->GetFormat()->size, 20U);
    EXPECT_EQ(clip_->Lock(LOCK_MODE_READ), nullptr);
    clip_->Unlock();
    EXPECT_TRUE(IsUnlocked(*clip_));
}

TEST_P(Clips, LoadAndSave) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = Ramp(100);
    clip_->Load(source.Get());
    EXPECT_EQ(clip_->GetSize(), 100U);
    EXPECT_EQ(clip_->GetModificationCount(), 1U);
    const auto target = Make<CMemoryOutputStream>();
    clip_->Save(target.Get(), true);
    EXPECT_EQ(target->bytes, Ramp(100));
    EXPECT_EQ(target->closed, 1);
    ExpectRaises<CNullPtrException>(resourcefailures::kNothingToSaveTo,
                                    [&] { clip_->Save(target.Get(), false); });
}

TEST_P(Clips, LoadDecoded) {
    clip_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    const auto source = Make<CMemoryInputStream>();
    source->bytes = CWavBuilder().Format({}).Chunk("data", Ramp(100)).Build();
    clip_->LoadDecoded(source.Get());
    EXPECT_EQ(BytesOf(*clip_), Ramp(100));
    EXPECT_EQ(static_cast<const TDataFormat_AudioPcm*>(clip_->GetFormat())->channels, 1U);
}

TEST_P(Clips, SizeLockAndFilter) {
    SetBytes(*clip_, Ramp(10));
    EXPECT_EQ(clip_->GetModificationCount(), 1U);
    clip_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    const auto filter = CreateAs<IInputStreamFilter>(classid::CInputStreamFilter);
    clip_->ApplyFilter(filter.Get());
    EXPECT_EQ(BytesOf(*clip_), Ramp(10));
    EXPECT_EQ(clip_->GetFormat()->id, CId::Null());
    EXPECT_EQ(clip_->GetModificationCount(), 2U);
}

TEST_P(Clips, TheirFormatStaysOpen) {
    clip_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    clip_->LockFormat();
    const TDataFormat_ImageRgb image;
    clip_->SetFormat(&image);
    EXPECT_EQ(clip_->GetFormat()->id, TDataFormat_ImageRgb::FormatId);
}

TEST_P(Clips, LockingTheFormatDoesNothingAtAll) {
    clip_->LockFormat();
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), clip_->GetObjectNumber() + 1);
}

TEST_P(Clips, AreReadAndWrittenByStreams) {
    SetBytes(*clip_, Ramp(4));
    const CInputStreamSelector source(clip_.Get());
    std::uint8_t bytes[10];
    EXPECT_EQ(source.GetInputStreamTmp()->Read(bytes, 10), 4U);
    const auto end = CreateAs<IAppendingRos>(classid::CAppendingRos);
    end->SetResource(clip_.Get());
    const TBytes more{4, 5};
    end->Write(more.data(), 2);
    EXPECT_EQ(BytesOf(*clip_), Ramp(6));
}

TEST_P(Clips, TakeTheRegisteredResourceClass) {
    v.GetClassStore().Clear();
    ExpectRaises<CClassNotFoundException>(classstorefailures::kCreateByIdNotFound, [&] { clip_->GetSize(); });
    v.GetClassStore().RegisterClassVrl(
        {classid::CResource, VRL_L("test::CMemoryInputStream"), &NewObject<CMemoryInputStream>});
    ExpectRaises<CBugException>(kNoResource, [&] { clip_->GetSize(); });
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(
        {classid::CResource, VRL_L("test::CReplacedResource"), &NewObject<CReplacedResource>});
    clip_->SetSize(3);
    EXPECT_EQ(BytesOf(*clip_), TBytes(3, 0xCD));
    clip_.Reset();
}

INSTANTIATE_TEST_SUITE_P(Rows, Clips,
                         testing::Values(TClipCase{"CAudioClip", classid::CAudioClip},
                                         TClipCase{"CVideoClip", classid::CVideoClip},
                                         TClipCase{"CBitmap", classid::CBitmap}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vorlund::test
