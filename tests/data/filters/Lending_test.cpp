// Streams that hand out their bytes where they are, and what may happen while they do.
#include "data/file/TemporaryFolder.h"
#include "data/filters/PcmConverterSource.h"
#include "data/resource/ForeignResource.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace vorlund::test {
namespace {

struct TActingIdentity {
    static constexpr CId ClassId{0x7E57F0E1, 0x2A4C6E80, 0x13579BDF, 0x52E50009};
};

/// Does something once inside of one of its locks, before it gives its bytes.
class CActingResource : public CForeignResourceAs<TActingIdentity> {
public:
    std::function<void()> act;

    void* Lock(TLockMode mode) override {
        if (const auto once = std::exchange(act, nullptr)) once();
        return CForeignResourceAs::Lock(mode);
    }
};

/// Reads 0, 1, 2 and so on, without end.
class CCountingChunkDecoder : public CInputFilterImpl<IWavChunkDecoder> {
public:
    static constexpr CId ClassId = classid::CWavChunkDecoder;

    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        auto* const bytes = static_cast<std::uint8_t*>(buffer);
        for (std::uint64_t i = 0; i < size; ++i) bytes[i] = next_++;
        return size;
    }
    IObjectList* EnumerateChunks() override { return nullptr; }
    std::uint64_t GetChunkSize() override { return 0; }
    std::int64_t GetChunkOffset() override { return 0; }
    void SelectChunk(const wchar*) override {}

private:
    std::uint8_t next_ = 0;
};

/// A converter from words to double words, which takes what its source lends.
class Lending : public testing::Test {
protected:
    ~Lending() noexcept override = default;
    Lending() {
        converter_->SetSampleFormat(SAMPLE_FORMAT_32BIT);
        const TDataFormat_AudioPcm words(SAMPLE_FORMAT_16BIT, 1, 8000);
        formatted_->SetFormat(&words);
    }
    /// Connects the converter to a stream whose bytes are words.
    void Connect(IInputStream* stream) {
        formatted_->Connect(stream);
        converter_->Connect(formatted_.Get());
    }
    TBytes Read(std::size_t samples) { return ReadOnce(*converter_, samples * 4); }
    /// A stream over the resource.
    CRefPtr<IResourceIs> Over(IResource* resource) {
        auto stream = CreateAs<IResourceIs>(classid::CResourceIs);
        stream->SetResource(resource);
        return stream;
    }

    CLibraryScope library_;
    CTemporaryFolder folder_;
    CRefPtr<ISetFormatIsf> formatted_ = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    CRefPtr<IAudioPcmSampleFormatConverter> converter_ =
        CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
};

const TBytes kTwoWords{0, 0, 1, 2, 0, 0, 3, 4};

TEST_F(Lending, AClosedFileIsRefusedAsByRead) {
    WriteFile(folder_.GetPath() / "raw", std::string("\1\2\3\4\5\6", 6));
    const auto file = CreateAs<IFileInputStream>(classid::CFileInputStream);
    file->Open(ToVorlund(folder_.GetPath() / "raw").c_str());
    Connect(file.Get());
    EXPECT_EQ(Read(2), kTwoWords);
    file->Close();
    std::uint8_t buffer[8];
    EXPECT_THROW(converter_->Read(buffer, sizeof buffer), CIOException);
    EXPECT_THROW(ReadFrames(*converter_, buffer, sizeof buffer), CIOException);
}

TEST_F(Lending, AStreamWithoutItsResourceIsRefusedAsByRead) {
    const auto resource = Make<CForeignResource>();
    resource->bytes = {1, 2, 3, 4};
    const auto stream = Over(resource.Get());
    Connect(stream.Get());
    EXPECT_EQ(Read(2), kTwoWords);
    EXPECT_TRUE(Read(2).empty());
    stream->SetResource(nullptr);
    std::uint8_t buffer[8];
    EXPECT_THROW(converter_->Read(buffer, sizeof buffer), CIOException);
    EXPECT_TRUE(resource->locks.empty());
}

// Between the look at the size and the lock, an application's resource may have become another.

TEST_F(Lending, AResourceThatHasShrunkLendsNothing) {
    const auto resource = Make<CActingResource>();
    resource->bytes = {1, 2, 3, 4, 5, 6, 7, 8};
    const auto stream = Over(resource.Get());
    Connect(stream.Get());
    EXPECT_EQ(Read(2), kTwoWords);
    resource->act = [&] { resource->bytes.resize(4); };
    EXPECT_TRUE(Read(2).empty());
    EXPECT_EQ(stream->Tell(), 4);
    EXPECT_TRUE(resource->locks.empty());
}

TEST_F(Lending, AResourceThatIsEmptyNowLendsNothing) {
    const auto resource = Make<CActingResource>();
    resource->bytes = {1, 2, 3, 4};
    const auto stream = Over(resource.Get());
    Connect(stream.Get());
    resource->act = [&] {
        resource->bytes.clear();
        // It says that there are bytes, and has none.
        resource->sizeWithoutData = 4;
    };
    EXPECT_TRUE(Read(2).empty());
    EXPECT_EQ(stream->Tell(), 0);
    EXPECT_TRUE(resource->locks.empty());
}

TEST_F(Lending, AStreamThatDoesNotLendIsRead) {
    const auto source = Make<CMemoryInputStream>();
    source->bytes = {1, 2, 3, 4};
    Connect(source.Get());
    EXPECT_EQ(Read(2), kTwoWords);
    std::uint8_t buffer[8];
    source->position = 0;
    EXPECT_EQ(ReadFrames(*converter_, buffer, sizeof buffer), 8u);
    EXPECT_EQ(TBytes(buffer, buffer + 8), kTwoWords);
}

TEST_F(Lending, FramesLongerThanAStepAreNoSounds) {
    const auto source = PcmSource({SAMPLE_FORMAT_32BIT, 4096, 8000}, TBytes(40000));
    converter_->SetSampleFormat(SAMPLE_FORMAT_8BIT);
    converter_->Connect(source.Get());
    TBytes buffer(20000);
    EXPECT_EQ(ReadFrames(*converter_, buffer.data(), buffer.size()), 0u);
}

TEST_F(Lending, AWavDecoderOverAnotherClassIsRead) {
    const TClassInfo wav = *v.GetClassStore().GetClassInfo(classid::CWavDecoder);
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl(wav);
    v.GetClassStore().RegisterClassVrl(
        {classid::CWavChunkDecoder, VRL_L("test::CCounting"), &NewObject<CCountingChunkDecoder>});
    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    Connect(decoder.Get());
    EXPECT_EQ(Read(2), (TBytes{0, 0, 0, 1, 0, 0, 2, 3}));
}

TEST_F(Lending, ADecoderThatGetsAnotherPlaceMeanwhileStaysThere) {
    const auto resource = Make<CActingResource>();
    resource->bytes =
        CWavBuilder().Format({}).Chunk("data", {1, 2, 3, 4}).Chunk("more", {5, 6, 7, 8}).Build();
    const auto stream = Over(resource.Get());
    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    chunks->Connect(stream.Get());
    chunks->SelectChunk(VRL_L("data"));
    Connect(chunks.Get());
    resource->act = [&] { chunks->SelectChunk(VRL_L("more")); };
    Read(1);
    EXPECT_EQ(chunks->Tell(), 0);
    EXPECT_EQ(chunks->GetChunkOffset(), 56);
    chunks->Seek(0);
    EXPECT_EQ(Read(2), (TBytes{0, 0, 5, 6, 0, 0, 7, 8}));
}

} // namespace
} // namespace vorlund::test
