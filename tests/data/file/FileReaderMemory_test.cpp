// What reading a file costs.
#include "vorlund/data/file/FileReader.h"

#include "data/file/TemporaryFolder.h"
#include "support/Allocations.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vorlund::test {
namespace {

class FileReaderMemory : public CFileTest {};

/// What the allocator adds to a block at most.
constexpr std::size_t kOverhead = 256;

TEST_F(FileReaderMemory, ReadsSeeksAndSkipsAllocateNothing) {
    const wstring path = ToVorlund(Put("a", std::string(300000, 'x')));
    const auto stream = CreateAs<IFileInputStream>(classid::CFileInputStream);
    stream->Open(path.c_str());
    std::string buffer(100000, '\0');
    stream->Read(buffer.data(), 1);
    const CAllocationCount count;
    for (const std::uint64_t size : {1, 44, 4096, 70000, 100000, 100000}) {
        stream->Read(buffer.data(), size);
        stream->Skip(3);
        stream->Seek(stream->Tell());
    }
    EXPECT_EQ(count.Get(), 0u);
}

TEST_F(FileReaderMemory, BufferIsMadeWhenItIsNeeded) {
    const wstring path = ToVorlund(Put("a", std::string(300000, 'x')));
    std::string buffer(100000, '\0');
    CFileReader reader;
    ASSERT_TRUE(reader.Open(path.c_str()));
    const CMemoryWatch memory;
    reader.Read(buffer.data(), 65536);
    const std::size_t afterLargeRead = memory.GetPeakBytes();
    reader.Read(buffer.data(), 4);
    const std::size_t afterSmallRead = memory.GetPeakBytes();
    reader.Close();
    const std::ptrdiff_t kept = memory.GetLiveBlocks();
    EXPECT_EQ(afterLargeRead, 0u) << "a large read goes past the buffer";
    EXPECT_GE(afterSmallRead, 65536u);
    EXPECT_LE(afterSmallRead, 65536u + kOverhead);
    EXPECT_EQ(kept, 0);
}

TEST_F(FileReaderMemory, SmallFilesHaveSmallBuffers) {
    char byte;
    for (const std::size_t size : {0u, 44u, 4096u, 5000u, 65536u, 65537u}) {
        const wstring path = ToVorlund(Put("a", std::string(size, 'x')));
        CFileReader reader;
        ASSERT_TRUE(reader.Open(path.c_str()));
        const CMemoryWatch memory;
        reader.Read(&byte, 1);
        const std::size_t peak = memory.GetPeakBytes();
        EXPECT_GE(peak, std::clamp<std::size_t>(size, 4096, 65536)) << size;
        EXPECT_LE(peak, std::clamp<std::size_t>(size, 4096, 65536) + kOverhead) << size;
    }
}

} // namespace
} // namespace vorlund::test
