#include "support/DebugRecorder.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // For good, not only during main: a report at the end of the process must not wait until somebody presses
    // a button.
    vorlund::test::SilenceDebugMessages();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
