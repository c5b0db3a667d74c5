// Resources: loading, plain and decoded.
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/TestDecoders.h"

namespace vorlund::test {
namespace {

constexpr TFailure kDecodedFormatLocked{VRL_L("vorlund::CResource::LoadDecoded"),
                                        resourcefailures::kResourceFile, 163, VRL_L("Data format is locked")};

class ResourceLoad : public CResourceTest {
protected:
    ResourceLoad() { SetBytes(*resource_, {1, 2, 3}); }
    ~ResourceLoad() noexcept override {}

    /// After a load that ended without data: empty, unlocked, and one modification more.
    void ExpectEmpty() {
        EXPECT_EQ(resource_->GetSize(), 0U);
        EXPECT_EQ(BytesOf(*resource_), TBytes());
        EXPECT_EQ(resource_->GetModificationCount(), 2U);
        EXPECT_TRUE(IsUnlocked(*resource_));
        EXPECT_EQ(ReferencesOf(source_.Get()), 1);
    }

    CRefPtr<CFaultyInputStream> source_ = Make<CFaultyInputStream>();
};

TEST_F(ResourceLoad, TakesAllBytes) {
    source_->bytes = Ramp(100000);
    source_->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO;
    resource_->Load(source_.Get());
    EXPECT_EQ(resource_->GetSize(), 100000U);
    EXPECT_EQ(BytesOf(*resource_), source_->bytes);
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
    EXPECT_EQ(resource_->GetFormat()->id, CId::Null()) << "the format is not loaded";
    EXPECT_EQ(source_->closed, 0);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(ReferencesOf(source_.Get()), 1);
}

TEST_F(ResourceLoad, AsksForWhatIsMissing) {
    TCallLog log;
    source_->log = &log;
    source_->bytes = Ramp(10);
    resource_->Load(source_.Get());
    EXPECT_EQ(log, (TCallLog{"Read 10"}));
}

TEST_F(ResourceLoad, ShortAndOddReadsAddUp) {
    source_->bytes = Ramp(1000);
    for (const std::uint64_t step : {1, 3, 7, 999}) {
        source_->position = 0;
        source_->maximumRead = step;
        resource_->Load(source_.Get());
        EXPECT_EQ(BytesOf(*resource_), source_->bytes) << step;
    }
}

TEST_F(ResourceLoad, EmptyStreamIsAModification) {
    resource_->Load(source_.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, StreamThatEndsBeforeItsLengthLeavesNothing) {
    source_->bytes = Ramp(10);
    source_->claimedLength = 11;
    resource_->Load(source_.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, StreamThatStandsFurtherOnLeavesNothing) {
    source_->bytes = Ramp(10);
    source_->position = 1;
    resource_->Load(source_.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, LongerStreamIsCutAtItsLength) {
    source_->bytes = Ramp(10);
    source_->claimedLength = 4;
    resource_->Load(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(4));
}

TEST_F(ResourceLoad, LengthsThatNoMemoryHoldsLeaveNothing) {
    source_->bytes = Ramp(10);
    std::uint32_t count = resource_->GetModificationCount();
    for (const std::int64_t length :
         {std::int64_t{-1}, std::int64_t{1} << 32, (std::int64_t{1} << 32) + 10, INT64_MIN, INT64_MAX}) {
        SetBytes(*resource_, {1, 2, 3});
        source_->claimedLength = length;
        resource_->Load(source_.Get());
        EXPECT_EQ(resource_->GetSize(), 0U);
        EXPECT_EQ(resource_->GetModificationCount(), count += 2);
        EXPECT_TRUE(IsUnlocked(*resource_));
        EXPECT_EQ(source_->position, 0) << "nothing is read";
    }
}

TEST_F(ResourceLoad, BigLengthOfASmallStreamIsNotTouched) {
    source_->bytes = Ramp(10);
    source_->claimedLength = (std::int64_t{1} << 32) - 1;
    resource_->Load(source_.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, ExaggeratedCountIsCut) {
    source_->bytes = Ramp(10);
    source_->exaggeration = 1;
    resource_->Load(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
    source_->position = 0;
    source_->exaggeration = std::uint64_t{1} << 40;
    resource_->Load(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
}

TEST_F(ResourceLoad, UnknownLengthRaisesNothing) {
    class CLengthless : public CMemoryInputStream {
    public:
        std::int64_t GetLength() override {
            Raise<COperationNotSupportedException>(streamfailures::kCannotTell);
        }
    };
    const auto stream = Make<CLengthless>();
    stream->bytes = Ramp(10);
    resource_->Load(stream.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, UnsupportedReadRaisesNothing) {
    source_->bytes = Ramp(10);
    source_->failAt = 4;
    source_->fail = [] { Raise<COperationNotSupportedException>(streamfailures::kCannotRead); };
    resource_->Load(source_.Get());
    ExpectEmpty();
}

TEST_F(ResourceLoad, OtherExceptionsPassOn) {
    source_->bytes = Ramp(10);
    for (const std::int64_t position : {0, 1, 9}) {
        SetBytes(*resource_, {1, 2, 3});
        source_->position = 0;
        source_->failAt = position;
        const std::uint32_t count = resource_->GetModificationCount();
        ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { resource_->Load(source_.Get()); });
        EXPECT_EQ(resource_->GetSize(), 0U);
        EXPECT_EQ(resource_->GetModificationCount(), count + 1);
        EXPECT_TRUE(IsUnlocked(*resource_));
    }
    source_->position = 0;
    source_->failAt = 0;
    source_->fail = [] { throw 42; };
    EXPECT_THROW(resource_->Load(source_.Get()), int);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceLoad, SizeIsNothingWhileBytesCome) {
    source_->bytes = Ramp(10);
    source_->failAt = 5;
    source_->fail = [&] {
        EXPECT_EQ(resource_->GetSize(), 0U);
        EXPECT_EQ(resource_->Lock(LOCK_MODE_READ), nullptr);
        resource_->Unlock();
        source_->failAt = 11;
    };
    resource_->Load(source_.Get());
    EXPECT_EQ(resource_->GetSize(), 10U);
}

TEST_F(ResourceLoad, StreamMayMeddleWithTheResource) {
    source_->bytes = Ramp(10);
    source_->failAt = 5;
    source_->fail = [&] {
        resource_->SetSize(1000);
        source_->failAt = 11;
    };
    resource_->Load(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
}

TEST_F(ResourceLoad, ItselfIsEmptyByThen) {
    resource_->Load(resource_.Get());
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
}

TEST_F(ResourceLoad, AnotherResource) {
    const auto other = CreateAs<IResource>(classid::CResource);
    SetBytes(*other, Ramp(500));
    resource_->Load(other.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(500));
}

// Decoded.

/// The decoders before have read some of it.
void Rewind(IInputStream* stream) {
    stream->Seek(0);
}

TEST_F(ResourceLoad, DecodedOfTheSameFormatIsLoaded) {
    const TDataFormat_AudioPcm own(1, 2, 44100);
    resource_->SetFormat(&own);
    source_->bytes = Ramp(8);
    source_->format = TDataFormat_AudioPcm(0, 1, 8000);
    resource_->LoadDecoded(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(8));
    EXPECT_EQ(std::memcmp(resource_->GetFormat(), &own, sizeof own), 0) << "the record stays";
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
}

TEST_F(ResourceLoad, DecodesToItsFormat) {
    const TDataFormat_AudioPcm own(1, 2, 44100);
    resource_->SetFormat(&own);
    const auto file = Make<CMemoryInputStream>();
    file->bytes = CWavBuilder().Format({.samplesPerSec = 8000, .bits = 8}).Chunk("data", Ramp(100)).Build();
    resource_->LoadDecoded(file.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(100));
    const auto& format = *static_cast<const TDataFormat_AudioPcm*>(resource_->GetFormat());
    ASSERT_EQ(format.size, 32U);
    EXPECT_EQ(format.sampleFormat, 0U);
    EXPECT_EQ(format.channels, 1U);
    EXPECT_EQ(format.samplesPerSec, 8000U);
    EXPECT_EQ(resource_->GetModificationCount(), 2U);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(ReferencesOf(file.Get()), 1);
}

TEST_F(ResourceLoad, LockedFormatMayBeDecodedTo) {
    resource_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    resource_->LockFormat();
    CTestDecoders decoders;
    decoders.Register(
        v.GetCodecClassStore(), 0,
        {.accepts = TestFormat(1), .produces = TDataFormat_AudioPcm::FormatId, .onConnect = &Rewind});
    source_->format = HeadOnly(TestFormat(1));
    source_->bytes = Ramp(10);
    resource_->LoadDecoded(source_.Get());
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
    EXPECT_EQ(resource_->GetFormat()->size, 20U) << "the decoder's record";
}

TEST_F(ResourceLoad, WhatCannotBeDecodedLeavesAllAsItWas) {
    resource_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    source_->bytes = Ramp(10);
    ExpectRaises<CDataFormatException>(codecstorefailures::kCannotDecodeStream,
                                       [&] { resource_->LoadDecoded(source_.Get()); });
    EXPECT_EQ(BytesOf(*resource_), (TBytes{1, 2, 3}));
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    EXPECT_EQ(resource_->GetFormat()->size, 32U);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceLoad, DecodedToNoFormatIsDecodedAsFarAsPossible) {
    // Without the library's decoder, which reads in its search for more.
    v.GetCodecClassStore().Close();
    v.GetCodecClassStore().Init();
    CTestDecoders decoders;
    decoders.Register(v.GetCodecClassStore(), 0,
                      {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = &Rewind});
    source_->format = HeadOnly(TestFormat(1));
    source_->bytes = Ramp(10);
    resource_->LoadDecoded(source_.Get());
    EXPECT_EQ(resource_->GetFormat()->id, TestFormat(2));
    EXPECT_EQ(BytesOf(*resource_), Ramp(10));
}

TEST_F(ResourceLoad, LockedNoFormatStaysWithoutOne) {
    CTestDecoders decoders;
    decoders.Register(v.GetCodecClassStore(), 0,
                      {.accepts = TestFormat(1), .produces = TestFormat(2), .onConnect = &Rewind});
    resource_->LockFormat();
    source_->format = HeadOnly(TestFormat(1));
    source_->bytes = Ramp(10);
    ExpectRaises<CDataFormatException>(kDecodedFormatLocked, [&] { resource_->LoadDecoded(source_.Get()); });
    EXPECT_EQ(BytesOf(*resource_), (TBytes{1, 2, 3}));
    EXPECT_EQ(resource_->GetFormat()->id, CId::Null());
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceLoad, DecodedThatRaisesLeavesNothingInTheFormerFormat) {
    resource_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    CTestDecoders decoders;
    decoders.Register(
        v.GetCodecClassStore(), 0,
        {.accepts = TestFormat(1), .produces = TDataFormat_AudioPcm::FormatId, .onConnect = &Rewind});
    source_->format = HeadOnly(TestFormat(1));
    source_->bytes = Ramp(10);
    source_->failAt = 5;
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { resource_->LoadDecoded(source_.Get()); });
    EXPECT_EQ(resource_->GetSize(), 0U);
    EXPECT_EQ(resource_->GetFormat()->size, 32U);
    EXPECT_TRUE(IsUnlocked(*resource_));
    EXPECT_EQ(ReferencesOf(source_.Get()), 1);
}

} // namespace
} // namespace vorlund::test
