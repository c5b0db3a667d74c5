// The option "--version".
#include "cli/ProgramFolder.h"

#include <vorlund/Version.h>

namespace vorlund::test {
namespace {

class VersionOption : public CProgramFolder {};

TEST_F(VersionOption, PrintsTheVersionAndNeedsNoCommand) {
    const TChildEnd end = Run({"--version"});
    EXPECT_TRUE(end.IsSuccess());
    EXPECT_EQ(end.errors, "");
    std::string output = end.output;
    std::erase(output, '\r');
    EXPECT_EQ(output, "vorlund " VORLUND_VERSION_STRING "\n");
}

} // namespace
} // namespace vorlund::test
