#include "support/DebugRecorder.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // For good, not for the length of main: what is still wrong at the end of the process is no reason to
    // wait for a press of a button.
    vorlund::test::SilenceDebugMessages();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
