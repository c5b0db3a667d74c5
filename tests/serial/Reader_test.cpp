// The base of readers: references and positions.
#include "serial/SerialTest.h"

#include <vorlund/Reader.h>
#include <vorlund/VarReader.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace vorlund::test {
namespace {

class CPlainReader : public CReader {
public:
    explicit CPlainReader(IInputStream* stream) : CReader(stream) {}
};

static_assert(!std::is_constructible_v<CReader, IInputStream*>);
static_assert(!std::is_copy_constructible_v<CPlainReader> && !std::is_copy_assignable_v<CPlainReader>);
static_assert(sizeof(CVarReader) == sizeof(CReader) && sizeof(CReader) == 2 * sizeof(void*));

using Reader = CSerialTest;

TEST_F(Reader, HoldsOneReference) {
    const auto stream = Source({});
    {
        const CPlainReader reader(stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
    CClassObject* const reader = new CVarReader(stream.Get());
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    delete reader;
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(Reader, PositionsAreTheStreams) {
    const auto stream = Source({1, 2, 3});
    CPlainReader reader(stream.Get());
    EXPECT_FALSE(reader.Eof());
    reader.Seek(2);
    EXPECT_EQ(reader.Tell(), 2u);
    EXPECT_FALSE(reader.Eof());
    reader.Seek(3);
    EXPECT_TRUE(reader.Eof());
    reader.Seek(~std::uint64_t{0});
    EXPECT_EQ(stream->position, -1);
    EXPECT_EQ(reader.Tell(), ~std::uint64_t{0});
}

} // namespace
} // namespace vorlund::test
