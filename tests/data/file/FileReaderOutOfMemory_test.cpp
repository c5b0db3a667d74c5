// Files when memory runs out.
#include "vorlund/data/file/FileReader.h"

#include "data/file/TemporaryFolder.h"
#include "support/RefuseEachAllocation.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class FileReaderOutOfMemory : public CFileTest {};

TEST_F(FileReaderOutOfMemory, RefusedBufferLosesNothing) {
    const wstring path = ToVorlund(Put("a", "abcdef"));
    CFileReader reader;
    ASSERT_TRUE(reader.Open(path.c_str()));
    ASSERT_TRUE(reader.Seek(2));
    char bytes[4] = {};
    std::size_t count = 0;
    EXPECT_EQ(
        RefuseEachAllocation([&] { count = reader.Read(bytes, 3); }, [&] { EXPECT_EQ(reader.Tell(), 2); }),
        1u);
    EXPECT_EQ(count, 3u);
    EXPECT_STREQ(bytes, "cde");
}

TEST_F(FileReaderOutOfMemory, RefusedOpenLeavesTheStreamClosed) {
    const wstring path = ToVorlund(Put("a", "abcdef"));
    const auto input = CreateAs<IFileInputStream>(classid::CFileInputStream);
    EXPECT_GE(RefuseEachAllocation([&] { input->Open(path.c_str()); },
                                   [&] { EXPECT_EQ(input->GetCapabilities(), 0u); }),
              1u);
    EXPECT_EQ(input->GetCapabilities(), 7u);
    const auto output = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
    EXPECT_GE(RefuseEachAllocation([&] { output->Open(path.c_str(), true); },
                                   [&] { EXPECT_EQ(output->GetCapabilities(), 0u); }, TKept::Room),
              1u);
    EXPECT_EQ(output->GetCapabilities(), 11u);
}

} // namespace
} // namespace vorlund::test
