// The command "window" on a system without a display.
#include "devices/DisplayScope.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(WindowCommandWithoutDisplay, SaysSoInOneLine) {
    const CDisplayScope display(":54321");
    const TChildEnd end = RunChild("vorlund", {.arguments = {"window", "--frames", "1"}});
    EXPECT_EQ(end.exitCode, 1u);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "vorlund: The video device cannot open a window: is there a display?\n");
}

} // namespace
} // namespace vorlund::test
