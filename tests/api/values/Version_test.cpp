// The version of the headers and of the library that runs.
#include "support/LibraryScope.h"

#include <vorlund/Version.h>

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

// What a program may write in a condition of the preprocessor.
#if !(VORLUND_VERSION >= VORLUND_MAKE_VERSION(0, 1, 0)) || VORLUND_VERSION >= VORLUND_MAKE_VERSION(1000, 0, 0)
#error "VORLUND_VERSION does not compare"
#endif

TEST(Version, RunningLibraryIsThatOfTheHeaders) {
    const TVersion& version = vorlund::GetVersion();
    EXPECT_EQ(version.majorNumber, VORLUND_VERSION_MAJOR);
    EXPECT_EQ(version.minorNumber, VORLUND_VERSION_MINOR);
    EXPECT_EQ(version.patchNumber, VORLUND_VERSION_PATCH);
    EXPECT_EQ(version.number, VORLUND_VERSION);
    EXPECT_STREQ(version.text, VORLUND_VERSION_STRING);
}

TEST(Version, TextHoldsTheThreeNumbers) {
    EXPECT_EQ(std::string(VORLUND_VERSION_STRING), std::to_string(VORLUND_VERSION_MAJOR) + "." +
                                                       std::to_string(VORLUND_VERSION_MINOR) + "." +
                                                       std::to_string(VORLUND_VERSION_PATCH));
}

TEST(Version, IsThatOfTheProject) {
    EXPECT_STREQ(vorlund::GetVersion().text, VORLUND_TEST_PROJECT_VERSION);
}

TEST(Version, LaterVersionsHaveGreaterNumbers) {
    EXPECT_LT(VORLUND_MAKE_VERSION(0, 1, 999), VORLUND_MAKE_VERSION(0, 2, 0));
    EXPECT_LT(VORLUND_MAKE_VERSION(0, 999, 999), VORLUND_MAKE_VERSION(1, 0, 0));
    EXPECT_LT(VORLUND_MAKE_VERSION(1, 2, 3), VORLUND_MAKE_VERSION(1, 2, 4));
}

TEST(Version, IsTheSameRecordWhileTheLibraryIsOpenAndAfter) {
    const TVersion* const before = &vorlund::GetVersion();
    {
        const CLibraryScope library;
        EXPECT_EQ(&vorlund::GetVersion(), before);
    }
    EXPECT_EQ(&vorlund::GetVersion(), before);
}

} // namespace
} // namespace vorlund::test
