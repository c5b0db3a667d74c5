// Resources: state, size, format, lock and saving.
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"
#include "support/KnownFailures.h"

namespace vorlund::test {
namespace {

constexpr TFailure kNothingToEncodeTo{VRL_L("vorlund::COutputStreamSelector::EncodeStream"),
                                      VRL_L("src/vorlund/data/OutputStreamSelector"), 97,
                                      VRL_L("Stream pointer is NULL")};

constexpr std::uint64_t k4GiB = std::uint64_t{1} << 32;

class Resource : public CResourceTest {};

TEST_F(Resource, IsEmptyAtFirst) {
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
    ASSERT_NE(resource_->GetFormat(), nullptr);
    EXPECT_EQ(resource_->GetFormat()->id, CId::Null());
    EXPECT_EQ(resource_->GetFormat()->size, 20U);
    EXPECT_NE(resource_->GetFormat(), &GetEmptyFormat());
    EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
}

TEST_F(Resource, SizeGivesNewBytes) {
    resource_->SetSize(10);
    EXPECT_EQ(resource_->GetSize(), 10U);
    void* const data = resource_->Lock(LOCK_MODE_WRITE);
    ASSERT_NE(data, nullptr);
    std::memset(data, 7, 10);
    EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), data);
    resource_->Unlock();
    resource_->Unlock();
    EXPECT_EQ(BytesOf(*resource_), TBytes(10, 7));

    resource_->SetSize(0);
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
}

TEST_F(Resource, SizeTakesNoLockAndIsNoModification) {
    resource_->SetSize(10);
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(Resource, SizeThatNoMemoryHoldsStandsWithoutData) {
    for (const std::uint64_t size : {k4GiB, k4GiB + 5, ~std::uint64_t{0}, std::uint64_t{1} << 63}) {
        SetBytes(*resource_, {1, 2, 3});
        resource_->SetSize(size);
        EXPECT_EQ(resource_->GetSize(), size);
        EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), nullptr);
        resource_->Unlock();

        // Nothing is saved then, and nothing is read.
        const auto target = Make<CMemoryOutputStream>();
        resource_->Save(target.Get(), true);
        EXPECT_TRUE(target->bytes.empty());
        const CInputStreamSelector source(resource_.Get());
        std::uint8_t byte = 9;
        EXPECT_EQ(source.GetInputStreamTmp()->Read(&byte, 1), 0U);
        EXPECT_EQ(byte, 9);
        resource_->SetSize(0);
        EXPECT_EQ(resource_->GetSize(), 0U);
    }
}

TEST_F(Resource, BigSizesAreNotTouched) {
    // The largest size there is: an address space may be too small for it, a memory need not be.
    resource_->SetSize(k4GiB - 1);
    EXPECT_EQ(resource_->GetSize(), k4GiB - 1);
    resource_->SetSize(3);
    EXPECT_NE(resource_->Lock(LOCK_MODE_READ), nullptr);
    resource_->Unlock();
}

// Locking.

TEST_F(Resource, OnlyReleasedWriteLocksAreModifications) {
    resource_->Lock(LOCK_MODE_READ);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
    resource_->Lock(LOCK_MODE_WRITE);
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    resource_->Lock(static_cast<TLockMode>(2));
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
    // Locks for writing, but is not counted.
    resource_->Lock(static_cast<TLockMode>(3));
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
}

TEST_F(Resource, NestedLocksCountByTheirOwnMode) {
    resource_->Lock(LOCK_MODE_WRITE);
    resource_->Lock(LOCK_MODE_READ);
    resource_->Lock(LOCK_MODE_WRITE);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    resource_->Unlock();
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
}

TEST_F(Resource, UnlockWithoutALockIsReported) {
    const CDebugRecorder recorder;
    resource_->Unlock();
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX),
              (std::vector<std::string>{"[vorlund::TReadWriteLockData::GetLockMode] Not locked!",
                                        "[vorlund::TReadWriteLockData::Unlock] Not locked!"}));
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
}

// Formats.

TEST_F(Resource, FormatIsCopiedAsFarAsItsSizeSays) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    const TDataFormat_AudioPcm audio(1, 2, 44100);
    TDataFormat_AudioPcm other(0, 1, 8000);
    for (const TDataFormat* const format :
         std::initializer_list<const TDataFormat*>{&audio, &other, &video, &video.image, &GetEmptyFormat()}) {
        resource_->SetFormat(format);
        EXPECT_NE(resource_->GetFormat(), format);
        ASSERT_EQ(resource_->GetFormat()->size, format->size);
        EXPECT_EQ(std::memcmp(resource_->GetFormat(), format, format->size), 0);
    }
    EXPECT_EQ(resource_->GetModificationCount(), 0U);
}

TEST_F(Resource, FormatOfTheSameSizeIsReplacedInPlace) {
    const TDataFormat_AudioPcm first(1, 2, 44100), second(0, 1, 8000);
    resource_->SetFormat(&first);
    const TDataFormat* const held = resource_->GetFormat();
    resource_->SetFormat(&second);
    EXPECT_EQ(resource_->GetFormat(), held);
    resource_->SetFormat(held);
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &second, sizeof second), 0);
}

TEST_F(Resource, FormatMayBeAPartOfItself) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    resource_->SetFormat(&video);
    resource_->SetFormat(&static_cast<const TDataFormat_VideoRgb*>(resource_->GetFormat())->image);
    ASSERT_EQ(resource_->GetFormat()->size, 68U);
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &video.image, 68), 0);
}

TEST_F(Resource, RecordIsAtLeastItsHead) {
    for (const std::uint32_t size : {0U, 1U, 19U}) {
        const TDataFormat cut{CId(1, 2, 3, 4), size};
        resource_->SetFormat(&cut);
        EXPECT_EQ(resource_->GetFormat()->id, cut.id);
        EXPECT_EQ(resource_->GetFormat()->size, size);
    }
}

TEST_F(Resource, NullFormatIsRefused) {
    ExpectRaises<CNullPtrException>(resourcefailures::kFormatIsNull, [&] { resource_->SetFormat(nullptr); });
}

TEST_F(Resource, LockedFormatTakesOnlyItsOwnKind) {
    const TDataFormat_AudioPcm first(1, 2, 44100), second(0, 1, 8000);
    resource_->SetFormat(&first);
    resource_->LockFormat();
    resource_->SetFormat(&second);
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &second, sizeof second), 0);
    const TDataFormat_ImageRgb image;
    ExpectRaises<CDataFormatException>(resourcefailures::kFormatLocked,
                                       [&] { resource_->SetFormat(&image); });
    ExpectRaises<CDataFormatException>(resourcefailures::kFormatLocked,
                                       [&] { resource_->SetFormat(&GetEmptyFormat()); });
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &second, sizeof second), 0);
    // The same kind in another size.
    TDataFormat head = HeadOnly(first.id);
    resource_->SetFormat(&head);
    EXPECT_EQ(resource_->GetFormat()->size, 20U);
    resource_->LockFormat();
    ExpectRaises<CDataFormatException>(resourcefailures::kFormatLocked,
                                       [&] { resource_->SetFormat(&image); });
}

// Saving.

TEST_F(Resource, SavesByOneWriteAndCloses) {
    SetBytes(*resource_, Ramp(1000));
    const auto target = Make<CMemoryOutputStream>();
    TCallLog log;
    target->log = &log;
    resource_->Save(target.Get(), true);
    EXPECT_EQ(log, (TCallLog{"Write 1000", "Close"}));
    EXPECT_EQ(target->bytes, Ramp(1000));
    EXPECT_EQ(ReferencesOf(target.Get()), 1);
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(Resource, EmptyOneSavesNoBytes) {
    const auto target = Make<CMemoryOutputStream>();
    resource_->Save(target.Get(), true);
    EXPECT_TRUE(target->bytes.empty());
    EXPECT_EQ(target->closed, 1);
}

TEST_F(Resource, SaveNeedsAStream) {
    const COutputStreamSelector nothing(static_cast<IOutputStream*>(nullptr));
    ExpectRaises<CNullPtrException>(resourcefailures::kNothingToSaveTo,
                                    [&] { resource_->Save(nothing, true); });
    // The library has no encoders.
    const auto target = Make<CMemoryOutputStream>();
    ExpectRaises<CNullPtrException>(resourcefailures::kNothingToSaveTo,
                                    [&] { resource_->Save(target.Get(), false); });
    EXPECT_EQ(target->closed, 0);
    EXPECT_EQ(ReferencesOf(target.Get()), 1);
    ExpectRaises<CNullPtrException>(kNothingToEncodeTo, [&] { resource_->Save(nothing, false); });
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(Resource, FailedSaveHoldsNothing) {
    SetBytes(*resource_, Ramp(100));
    const auto target = Make<CMemoryOutputStream>();
    target->maximumSize = 50;
    ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { resource_->Save(target.Get(), true); });
    EXPECT_EQ(ReferencesOf(target.Get()), 1);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(BytesOf(*resource_), Ramp(100));
}

TEST_F(Resource, SavesIntoAnotherResource) {
    SetBytes(*resource_, Ramp(100));
    const auto other = CreateAs<IResource>(classid::CResource);
    resource_->Save(other.Get(), true);
    EXPECT_EQ(BytesOf(*other), Ramp(100));
    EXPECT_EQ(ReferencesOf(other.Get()), 1);
}

TEST_F(Resource, SavesIntoItself) {
    SetBytes(*resource_, Ramp(100));
    resource_->Save(resource_.Get(), true);
    EXPECT_EQ(BytesOf(*resource_), Ramp(100));

    // To its own end: the bytes move while they are written.
    const auto end = CreateAs<IAppendingRos>(classid::CAppendingRos);
    end->SetResource(resource_.Get());
    resource_->Save(end.Get(), true);
    TBytes twice = Ramp(100);
    twice.insert(twice.end(), twice.begin(), twice.begin() + 100);
    EXPECT_EQ(BytesOf(*resource_), twice);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
}

} // namespace
} // namespace vorlund::test
