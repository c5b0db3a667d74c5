// Files that grow after they were opened.
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include "data/file/TemporaryFolder.h"
#include "support/LibraryScope.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vorlund::test {
namespace {

class DecodeFileGrowth : public testing::Test {
protected:
    void Write(const TBytes& bytes) {
        WriteFile(path_, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    void Append(const TBytes& bytes) {
        std::ofstream file(path_, std::ios::binary | std::ios::app);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        ASSERT_TRUE(file.flush());
    }
    /// With `Ramp(20)`.
    static TBytes DataChunk() {
        const TBytes file = CWavBuilder().Chunk("data", Ramp(20)).Build();
        return {file.begin() + 12, file.end()};
    }
    static TBytes ReadAll(IInputStream& stream) {
        TBytes all;
        TBytes block(4000);
        while (const std::uint64_t count = stream.Read(block.data(), block.size()))
            all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
        return all;
    }

    CLibraryScope library_;
    CTemporaryFolder folder_;
    fs::path path_ = folder_.GetPath() / "a";
};

TEST_F(DecodeFileGrowth, BytesAppendedAfterOpeningAreRead) {
    for (const std::size_t size : {10u, 5'000u, 100'000u}) {
        SCOPED_TRACE(size);
        // Declares more than it holds yet, as a recording under way.
        Write(CWavBuilder().Format({}).Declare("data", 1'000'000, Ramp(size)).Build());
        const auto stream = CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeFile(ToVorlund(path_).c_str(), TDataFormat_AudioPcm::FormatId));
        Append(Ramp(300, static_cast<unsigned int>(size)));
        EXPECT_EQ(ReadAll(*stream), Ramp(size + 300));
        Append(Ramp(7));
        EXPECT_EQ(ReadAll(*stream), Ramp(7));
    }
}

TEST_F(DecodeFileGrowth, ChunksAppendedBeforeTheSearchAreFound) {
    for (const std::size_t size : {0u, 10u, 100'000u}) {
        SCOPED_TRACE(size);
        Write(CWavBuilder().Format({}).Chunk("note", TBytes(size)).Build());
        const auto file = CreateAs<IFileInputStream>(classid::CFileInputStream);
        file->Open(ToVorlund(path_).c_str());
        std::uint8_t byte;
        EXPECT_EQ(file->Read(&byte, 1), 1u);
        Append(DataChunk());
        const auto stream = CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeStream(file.Get(), TDataFormat_AudioPcm::FormatId));
        EXPECT_EQ(ReadAll(*stream), Ramp(20));
    }
}

TEST_F(DecodeFileGrowth, ChunksAppendedByWhoFollowsTheSearchAreFound) {
    Write(CWavBuilder().Format({}).Build());
    TDecoderChoice choice;
    choice.onCandidate = [&](const CId&) { Append(DataChunk()); };
    const auto stream = CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeFile(ToVorlund(path_).c_str(), TDataFormat_AudioPcm::FormatId, choice));
    EXPECT_EQ(ReadAll(*stream), Ramp(20));
}

} // namespace
} // namespace vorlund::test
