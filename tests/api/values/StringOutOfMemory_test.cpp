// Texts when memory runs out.
#include "api/values/StringChanges.h"
#include "support/RefuseEachAllocation.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <functional>

namespace vorlund::test {
namespace {

TEST(StringOutOfMemory, RefusedChangesLeaveTheTextWhole) {
    std::size_t refusals = 0;
    for (const TStringChange& change : kStringChanges) {
        SCOPED_TRACE(change.name);
        CString text("aaabcaaaabcaabb");
        const wchar* const buffer = text.GetBuffer();
        refusals += RefuseEachAllocation([&] { Apply(change, text); },
                                         [&] {
                                             EXPECT_EQ(text.GetBuffer(), buffer);
                                             EXPECT_EQ(Narrow(text), "aaabcaaaabcaabb");
                                         });
    }
    EXPECT_GE(refusals, 10u);
}

TEST(StringOutOfMemory, RefusedConstructionsLeaveNothing) {
    const CString source("source");
    const std::function<void()> rows[] = {
        [] { CString(); },
        [] { CString("narrow"); },
        [] { CString(VRL_L("wide")); },
        [&] { CString copy(source); },
        [&] { source + "narrow"; },
        [&] { source + VRL_L("wide"); },
        [&] { source.SubStr(1, 2); },
        [&] { source - VRL_L("our"); },
    };
    for (const auto& row : rows) {
        const auto act = [&] {
            try {
                row();
            } catch (const CObjectNotFoundException&) {
                // So ends a removal.
            }
        };
        EXPECT_GE(RefuseEachAllocation(act, [] {}), 1u);
    }
}

} // namespace
} // namespace vorlund::test
