// What only POSIX systems refuse.
#include "data/file/RefusedOpenings.h"

#include <string>

#include <sys/stat.h>

namespace vorlund::test {
namespace {

using OpenFailurePosix = CRefusedOpenings;

TEST_F(OpenFailurePosix, APipe) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
    EXPECT_EQ(OfInput("pipe"), OPEN_CAUSE_NO_POSITIONS);
    // Nobody reads from it.
    EXPECT_EQ(OfOutput("pipe"), OPEN_CAUSE_NO_POSITIONS);
}

TEST_F(OpenFailurePosix, ANameThatIsTooLong) {
    EXPECT_EQ(OfInput(std::string(300, 'x')), OPEN_CAUSE_NAME);
    fs::create_symlink(At("ring"), At("ring"));
    EXPECT_EQ(OfInput("ring"), OPEN_CAUSE_NAME);
}

TEST_F(OpenFailurePosix, NotForThisUser) {
    // Not even for the superuser.
    EXPECT_THROW(output_->Open(VRL_L("/proc/sys/kernel/osrelease"), false), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_NOT_PERMITTED);
}

TEST_F(OpenFailurePosix, AProgramThatRuns) {
    EXPECT_THROW(output_->Open(VRL_L("/proc/self/exe"), true), CFileAccessException);
    EXPECT_EQ(GetOpenFailure().cause, OPEN_CAUSE_BUSY);
}

} // namespace
} // namespace vorlund::test
