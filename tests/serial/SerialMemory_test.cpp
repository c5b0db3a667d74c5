// What readers and writers allocate.
#include "serial/SerialTest.h"
#include "support/Allocations.h"
#include "support/NothingLeft.h"

#include <vorlund/LineReader.h>
#include <vorlund/TextWriter.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class SerialMemory : public CSerialTest {
protected:
    ~SerialMemory() noexcept override {}
};

TEST_F(SerialMemory, WritingNeedsNone) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->bytes.reserve(1000);
    CVarWriter values(stream.Get());
    CTextWriter text(stream.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_CRLF);
    const CString string("text");
    const CAllocationCount count;
    values << 1 << 2.0 << true << string << VRL_L("text");
    text.Write(VRL_L("%s %d %f\n"), VRL_L("text"), 1, 2.0);
    EXPECT_EQ(count.Get(), 0u);
}

TEST_F(SerialMemory, AWrongCountTakesNoMemoryForWhatNeverComes) {
    const auto stream = QuietSource({0xFE, 0xFF, 0xFF, 0x3F, 'a', 0});
    CString text;
    const CMemoryWatch watch;
    CVarReader(stream.Get()) >> text;
    EXPECT_EQ(Narrow(text), "a");
    EXPECT_LT(watch.GetPeakBytes(), 200000u);
}

// Pieces of a long line are not copied again and again.
TEST_F(SerialMemory, LongLinesGrowByDoubling) {
    const auto stream = QuietSource(TBytes(1 << 20, 'x'));
    CLineReader reader(stream.Get(), CHAR_FORMAT_8BIT);
    wstring line;
    const CAllocationCount count;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line.size(), std::size_t{1} << 20);
    EXPECT_LT(count.Get(), 60u);
}

TEST_F(SerialMemory, NothingIsLeftBehind) {
    const auto source = QuietSource(Bytes("one\ntwo\r\n"));
    ExpectNothingLeft([&] {
        CLineReader reader(source.Get(), CHAR_FORMAT_8BIT);
        CString line;
        while (reader.ReadLine(line)) {
        }
    });
}

} // namespace
} // namespace vorlund::test
