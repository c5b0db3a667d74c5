#include "vorlund/api/values/PathReason.h"

#include "support/DebugRecorder.h"
#include "support/Text.h"

#include <vorlund/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

TEST(PathReason, FormatsIntoOneBuffer) {
    const wchar* const first = PathReason(VRL_L("Cannot open %s!"), VRL_L("a\u65E5.wav"));
    EXPECT_EQ(Narrow(first), "Cannot open a\u65E5.wav!");
    const wchar* const second = PathReason(VRL_L("Cannot find %s"), VRL_L("b"));
    EXPECT_EQ(second, first);
    EXPECT_EQ(Narrow(first), "Cannot find b");
}

TEST(PathReason, IsCutAt255Units) {
    for (const std::size_t length : {252u, 253u, 254u, 5000u}) {
        const wstring path(length, VRL_L('p'));
        EXPECT_EQ(Narrow(PathReason(VRL_L("a %s"), path.c_str())),
                  "a " + std::string(std::min<std::size_t>(length, 253), 'p'));
    }
}

TEST(PathReason, PathMayBeAReason) {
    const wchar* const reason = PathReason(VRL_L("%s"), VRL_L("x"));
    EXPECT_EQ(Narrow(PathReason(VRL_L("<%s>"), reason)), "<x>");
    EXPECT_EQ(Narrow(PathReason(VRL_L("<%s>"), reason + 1)), "<x>>");
}

TEST(PathReason, NullPath) {
    EXPECT_EQ(Narrow(PathReason(VRL_L("Cannot open %s"), nullptr)), "Cannot open (null)");
}

TEST(PathReason, ThreadsMayMixTheirTextsButNothingElse) {
    const CDebugRecorder recorder;
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; ++number) {
        threads.emplace_back([number] {
            const wstring path(static_cast<std::size_t>(100 + 300 * number),
                               static_cast<wchar>('a' + number));
            for (int i = 0; i < 300; ++i) {
                const CFileAccessException exception(VRL_L("m"), VRL_L("f"), 1,
                                                     PathReason(VRL_L("%s"), path.c_str()));
                EXPECT_EQ(exception.GetLine(), 1);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    const auto entries = recorder.GetEntries();
    ASSERT_EQ(entries.size(), 900u);
    const std::string start = "Exception: type=CFileAccessException | method=m | file=f | line=1 | reason=";
    for (const auto& entry : entries) {
        const std::string line = Narrow(entry.text);
        ASSERT_EQ(line.rfind(start, 0), 0u);
        ASSERT_LE(line.size(), 255u);
        ASSERT_EQ(line.find_first_not_of("abc", start.size()), std::string::npos) << line;
    }
}

} // namespace
} // namespace vorlund::test
