// The C interface from programs of other compilers: calls, records, callbacks, 64-bit numbers by value and by
// address, and texts of both forms.
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

class OtherCompilers : public testing::TestWithParam<const char*> {};

TEST_P(OtherCompilers, ClientSeesWhatAllSee) {
    TChildEnd end = RunChild(GetParam());
    std::erase(end.output, '\r');
    EXPECT_EQ(end.output, "version 1 0\n"
                          "format 1 8000\n"
                          "length 200 100\n"
                          "samples 5 162\n"
                          "frame 8 21\n"
                          "error 12 42\n"
                          "released 1 0\n"
                          "CFileAccessException 20 20\n"
                          "handles 0 0\n");
    EXPECT_TRUE(end.IsSuccess()) << end.errors;
}

INSTANTIATE_TEST_SUITE_P(Clients, OtherCompilers, testing::Values(VORLUND_TEST_CLIENTS),
                         [](const auto& client) { return std::string(client.param); });

} // namespace
} // namespace vorlund::test
