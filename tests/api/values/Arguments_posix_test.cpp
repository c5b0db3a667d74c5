#include <vorlund/Arguments.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(ArgumentsPosix, AreThoseGivenByteForByte) {
    const char* const given[] = {"program", "", "a b", "\xC3\xA9", "\xFF\\", nullptr};
    EXPECT_EQ(GetUtf8Arguments(5, given), (std::vector<std::string>{"", "a b", "\xC3\xA9", "\xFF\\"}));
    EXPECT_TRUE(GetUtf8Arguments(1, given).empty());
    const char* const none[] = {nullptr};
    EXPECT_TRUE(GetUtf8Arguments(0, none).empty());
}

} // namespace
} // namespace vorlund::test
