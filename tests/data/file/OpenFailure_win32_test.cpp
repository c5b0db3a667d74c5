// What only Windows refuses.
#include "data/file/RefusedOpenings.h"

#include <windows.h>

namespace vorlund::test {
namespace {

using OpenFailureWin32 = CRefusedOpenings;

TEST_F(OpenFailureWin32, SomebodyElseKeepsItToHimself) {
    const std::wstring path = At("alone").wstring();
    WriteFile(At("alone"), "x");
    const HANDLE alone = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(alone, INVALID_HANDLE_VALUE);
    EXPECT_EQ(OfInput("alone"), OPEN_CAUSE_BUSY);
    CloseHandle(alone);
}

} // namespace
} // namespace vorlund::test
