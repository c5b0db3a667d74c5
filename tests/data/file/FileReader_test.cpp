// The reader under the file streams.
#include "vorlund/data/file/FileReader.h"

#include "data/file/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class FileReader : public CFileTest {};

TEST_F(FileReader, ClosedReaderIsAtTheStartOfNothing) {
    CFileReader reader;
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.GetLength(), 0);
    EXPECT_EQ(reader.Tell(), 0);
    EXPECT_FALSE(reader.Open(ToVorlund(At("missing")).c_str()));
    EXPECT_FALSE(reader.IsOpen());
    ASSERT_TRUE(reader.Open(ToVorlund(Put("a", "abc")).c_str()));
    EXPECT_TRUE(reader.Seek(2));
    reader.Close();
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.GetLength(), 0);
    EXPECT_EQ(reader.Tell(), 0);
}

} // namespace
} // namespace vorlund::test
