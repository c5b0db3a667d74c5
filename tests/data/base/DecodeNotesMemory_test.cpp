// Notes for which there is no memory: they are left out, and whoever takes them goes on.
#include "vorlund/data/base/NoteTaking.h"

#include "support/RefuseEachAllocation.h"

#include <vorlund/DecodeNotes.h>

#include <functional>

namespace vorlund::test {
namespace {

constexpr const wchar* kLong = VRL_L("a text too long to be kept in place");

TEST(DecodeNotesMemory, WhatHasNoRoomIsLeftOut) {
    const std::function<void()> acts[] = {[] { NoteContainer(kLong); }, [] { NoteValue(kLong, 7); },
                                          [] { NoteValue(VRL_L("name"), kLong); }, [] { NoteRemark(kLong); }};
    for (const auto& act : acts) {
        notes::TNotes taken;
        const std::size_t refusals = RefuseEachAllocation(
            [&] {
                taken = {};
                const notes::CTaker taker(&taken);
                act();
            },
            [&](TRefusal refusal) {
                EXPECT_EQ(refusal, TRefusal::Survived);
                EXPECT_TRUE((taken.container + taken.values + taken.remarks).empty());
            });
        EXPECT_GE(refusals, 1u);
        EXPECT_FALSE((taken.container + taken.values + taken.remarks).empty());
    }
}

} // namespace
} // namespace vorlund::test
