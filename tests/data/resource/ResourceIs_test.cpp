// The resource input stream.
#include "data/resource/ForeignResource.h"
#include "data/resource/ResourceTest.h"

#include "support/Failures.h"

#include <vorlund/MediaSample.h>

namespace vorlund::test {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/resource/ResourceIs");
constexpr const wchar* kRead = VRL_L("vorlund::CResourceIs::Read");
constexpr const wchar* kNoResource = VRL_L("No resource bound");
constexpr TFailure kLengthUnbound{VRL_L("vorlund::CResourceIs::GetLength"), kFile, 76, kNoResource};
constexpr TFailure kSeekUnbound{VRL_L("vorlund::CResourceIs::Seek"), kFile, 88, kNoResource};
constexpr TFailure kTellUnbound{VRL_L("vorlund::CResourceIs::Tell"), kFile, 99, kNoResource};
constexpr TFailure kBufferIsNull{kRead, kFile, 116, VRL_L("buffer is NULL")};
constexpr TFailure kReadUnbound{kRead, kFile, 117, kNoResource};
constexpr TFailure kSampleIsNull{kRead, kFile, 140, VRL_L("sample is NULL")};
constexpr TFailure kNoMediaSamples{kRead, kFile, 141, VRL_L("Media samples are not supported")};
constexpr TFailure kSkipUnbound{VRL_L("vorlund::CResourceIs::Skip"), kFile, 151,
                                VRL_L("Stream is not bound to a resource")};

class ResourceIs : public CResourceTest {
protected:
    ResourceIs() { SetBytes(*resource_, Ramp(10)); }
    ~ResourceIs() noexcept override {}

    void Bind() { stream_->SetResource(resource_.Get()); }
    /// What one read gives.
    TBytes Read(std::uint64_t size) {
        TBytes bytes(100, 0xEE);
        bytes.resize(static_cast<std::size_t>(stream_->Read(bytes.data(), size)));
        return bytes;
    }

    CRefPtr<IResourceIs> stream_ = CreateAs<IResourceIs>(classid::CResourceIs);
    std::uint8_t byte_ = 0xEE;
};

TEST_F(ResourceIs, Unbound) {
    EXPECT_EQ(stream_->GetCapabilities(), 0U);
    EXPECT_TRUE(stream_->Eof());
    EXPECT_EQ(&stream_->GetFormat(), &GetEmptyFormat());
    EXPECT_FALSE(stream_->SupportsMediaSamples(0));
    stream_->Flush();
    stream_->Close();
    ExpectRaises<COperationNotSupportedException>(kLengthUnbound, [&] { stream_->GetLength(); });
    ExpectRaises<COperationNotSupportedException>(kSeekUnbound, [&] { stream_->Seek(0); });
    ExpectRaises<COperationNotSupportedException>(kTellUnbound, [&] { stream_->Tell(); });
    ExpectRaises<CIOException>(kReadUnbound, [&] { stream_->Read(&byte_, 1); });
    ExpectRaises<CIOException>(kReadUnbound, [&] { stream_->Read(&byte_, 0); });
    ExpectRaises<CIOException>(kSkipUnbound, [&] { stream_->Skip(0); });
    EXPECT_EQ(byte_, 0xEE);
}

TEST_F(ResourceIs, Bound) {
    resource_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    Bind();
    EXPECT_EQ(stream_->GetCapabilities(), 15U);
    EXPECT_EQ(stream_->GetLength(), 10);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(&stream_->GetFormat(), resource_->GetFormat());
    EXPECT_FALSE(stream_->SupportsMediaSamples(1));
    stream_->Flush();
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(ResourceIs, ReadsToTheEnd) {
    Bind();
    EXPECT_EQ(Read(4), (TBytes{0, 1, 2, 3}));
    EXPECT_EQ(stream_->Tell(), 4);
    EXPECT_EQ(Read(4), (TBytes{4, 5, 6, 7}));
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(Read(4), (TBytes{8, 9}));
    EXPECT_TRUE(stream_->Eof());
    EXPECT_EQ(Read(4), TBytes());
    EXPECT_EQ(stream_->Tell(), 10);
    EXPECT_EQ(resource_->GetModificationCount(), 1U);
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceIs, ReadsNothingAndEverything) {
    Bind();
    EXPECT_EQ(Read(0), TBytes());
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_EQ(Read(~std::uint64_t{0}), Ramp(10));
}

TEST_F(ResourceIs, ArgumentsComeFirst) {
    const auto sample = CreateAs<IMediaSample>(classid::CMediaSample);
    for (const bool isBound : {false, true}) {
        if (isBound) Bind();
        ExpectRaises<CNullPtrException>(kBufferIsNull,
                                        [&] { stream_->Read(static_cast<void*>(nullptr), 0); });
        ExpectRaises<CNullPtrException>(kBufferIsNull,
                                        [&] { stream_->Read(static_cast<void*>(nullptr), 4); });
        ExpectRaises<CNullPtrException>(kSampleIsNull,
                                        [&] { stream_->Read(static_cast<IMediaSample*>(nullptr)); });
        ExpectRaises<CInvalidParameterException>(kNoMediaSamples, [&] { stream_->Read(sample.Get()); });
    }
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(ResourceIs, SeeksUpToTheEnd) {
    Bind();
    const struct {
        std::int64_t target;
        std::int64_t expected;
    } rows[] = {{0, 0},   {3, 3},          {10, 10},        {11, 10}, {100, 10},
                {-1, 10}, {INT64_MIN, 10}, {INT64_MAX, 10}, {0, 0}};
    for (const auto& row : rows) {
        stream_->Seek(row.target);
        EXPECT_EQ(stream_->Tell(), row.expected) << row.target;
    }
    stream_->Seek(7);
    EXPECT_EQ(Read(5), (TBytes{7, 8, 9}));
}

TEST_F(ResourceIs, SkipsUpToTheEnd) {
    Bind();
    stream_->Skip(0);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->Skip(4);
    EXPECT_EQ(stream_->Tell(), 4);
    stream_->Skip(~std::uint64_t{0});
    EXPECT_EQ(stream_->Tell(), 10);
    stream_->Seek(9);
    stream_->Skip(1);
    EXPECT_TRUE(stream_->Eof());
}

TEST_F(ResourceIs, HoldsOneReference) {
    Bind();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 2);
    Bind();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 2);
    const auto other = CreateAs<IResource>(classid::CResource);
    stream_->SetResource(other.Get());
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    EXPECT_EQ(ReferencesOf(other.Get()), 2);
    stream_->SetResource(nullptr);
    EXPECT_EQ(ReferencesOf(other.Get()), 1);
    EXPECT_EQ(stream_->GetCapabilities(), 0U);
    Bind();
    stream_.Reset();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
}

TEST_F(ResourceIs, KeepsTheResourceAlive) {
    Bind();
    resource_.Reset();
    EXPECT_EQ(Read(3), Ramp(3));
    {
        auto own = CreateAs<IResource>(classid::CResource);
        stream_->SetResource(own.Get());
        stream_->SetResource(std::exchange(own, {}).Get());
    }
    EXPECT_EQ(stream_->GetLength(), 0);
}

TEST_F(ResourceIs, BindingKeepsThePosition) {
    Bind();
    stream_->Seek(6);
    stream_->SetResource(nullptr);
    Bind();
    EXPECT_EQ(stream_->Tell(), 6);
    EXPECT_EQ(Read(2), (TBytes{6, 7}));
}

TEST_F(ResourceIs, CloseUnbindsAndGoesToTheStart) {
    Bind();
    stream_->Seek(6);
    stream_->Close();
    EXPECT_EQ(ReferencesOf(resource_.Get()), 1);
    EXPECT_EQ(stream_->GetCapabilities(), 0U);
    Bind();
    EXPECT_EQ(stream_->Tell(), 0);
    // Without a resource too.
    stream_->Seek(6);
    stream_->SetResource(nullptr);
    stream_->Close();
    Bind();
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(ResourceIs, SeesTheResourceChange) {
    Bind();
    stream_->Seek(8);
    SetBytes(*resource_, Ramp(3));
    EXPECT_EQ(stream_->Tell(), 8);
    EXPECT_TRUE(stream_->Eof());
    EXPECT_EQ(Read(4), TBytes());
    stream_->Skip(5);
    EXPECT_EQ(stream_->Tell(), 8);
    SetBytes(*resource_, Ramp(20));
    EXPECT_EQ(stream_->GetLength(), 20);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(Read(4), (TBytes{8, 9, 10, 11}));
}

TEST_F(ResourceIs, ReadsWhileTheThreadWrites) {
    Bind();
    resource_->Lock(LOCK_MODE_WRITE);
    EXPECT_EQ(Read(4), Ramp(4));
    resource_->Unlock();
    EXPECT_TRUE(IsUnlocked(*resource_));
}

TEST_F(ResourceIs, ForeignResource) {
    const auto foreign = Make<CForeignResource>();
    foreign->bytes = Ramp(6);
    foreign->format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO;
    stream_->SetResource(foreign.Get());
    EXPECT_EQ(stream_->GetLength(), 6);
    EXPECT_EQ(&stream_->GetFormat(), &foreign->format.Get());
    EXPECT_EQ(Read(4), Ramp(4));
    EXPECT_EQ(Read(4), (TBytes{4, 5}));
    EXPECT_EQ(Read(4), TBytes());
    // One lock per read, none at the end.
    EXPECT_EQ(foreign->locksTaken, (std::vector<TLockMode>(2, LOCK_MODE_READ)));
    EXPECT_TRUE(foreign->locks.empty());
}

TEST_F(ResourceIs, ForeignResourceWithoutData) {
    const auto foreign = Make<CForeignResource>();
    foreign->sizeWithoutData = 100;
    stream_->SetResource(foreign.Get());
    EXPECT_EQ(Read(4), TBytes());
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_TRUE(foreign->locks.empty());
}

} // namespace
} // namespace vorlund::test
