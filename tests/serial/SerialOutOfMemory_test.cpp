// What readers hold when memory runs out.
#include "serial/SerialTest.h"
#include "support/RefuseEachAllocation.h"

#include <vorlund/LineReader.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace vorlund::test {
namespace {

class SerialOutOfMemory : public CSerialTest {
protected:
    ~SerialOutOfMemory() noexcept override {}
};

TEST_F(SerialOutOfMemory, ARefusedTextIsAsItWasOrEmpty) {
    const auto target = Make<CMemoryOutputStream>();
    CVarWriter(target.Get()) << wstring(150000, 'a').c_str();
    const auto stream = QuietSource(target->bytes);
    CString text("before");
    std::size_t refusals = 0;
    const auto read = [&] {
        stream->position = 0;
        CVarReader(stream.Get()) >> text;
    };
    EXPECT_GT(RefuseEachAllocation(
                  read,
                  [&] {
                      EXPECT_EQ(Narrow(text), refusals++ == 0 ? "before" : "");
                      text = "before";
                  },
                  TKept::Other),
              2u);
    EXPECT_EQ(text.Length(), 150000u);
}

/// A line in the window, and one that is longer.
class SerialOutOfMemoryLines : public SerialOutOfMemory, public testing::WithParamInterface<std::size_t> {
protected:
    ~SerialOutOfMemoryLines() noexcept override {}
};

TEST_P(SerialOutOfMemoryLines, ARefusedOneIsReadByTheNextCall) {
    const std::string first(GetParam(), 'x');
    const std::string second(2000, 'y');
    // Carriage returns of the beginning are gone when the line is put together.
    const auto stream = QuietSource(Bytes("\r\r\r" + first + "\r\n" + second));
    std::optional<CLineReader> reader;
    CString line;
    const auto begin = [&] {
        stream->position = 0;
        line = "before";
        reader.emplace(stream.Get(), CHAR_FORMAT_8BIT);
    };
    const auto expectSecond = [&] {
        ASSERT_TRUE(reader->ReadLine(line));
        EXPECT_EQ(Narrow(line), second);
    };
    bool hasLine = false;
    begin();
    const std::size_t refusals = RefuseEachAllocation([&] { hasLine = reader->ReadLine(line); },
                                                      [&](TRefusal refusal) {
                                                          ASSERT_NE(refusal, TRefusal::Foreign);
                                                          if (refusal == TRefusal::Raised) {
                                                              EXPECT_EQ(Narrow(line), "before");
                                                              ASSERT_TRUE(reader->ReadLine(line));
                                                          }
                                                          EXPECT_EQ(Narrow(line), first);
                                                          expectSecond();
                                                          begin();
                                                      },
                                                      TKept::Other);
    EXPECT_GE(refusals, 1u);
    EXPECT_TRUE(hasLine);
    EXPECT_EQ(Narrow(line), first);
    expectSecond();
}

INSTANTIATE_TEST_SUITE_P(Lengths, SerialOutOfMemoryLines,
                         testing::Values(3000, CLineReader::kWindow * 5 / 2));

} // namespace
} // namespace vorlund::test
