#include <vorlund/Event.h>

#include "support/NothingLeft.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(EventMemory, AssignmentGivesBackWhatWasThere) {
    ExpectNothingLeft([] {
        const CEvent source;
        CEvent target;
        target = source;
    });
}

} // namespace
} // namespace vorlund::test
