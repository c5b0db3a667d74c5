/// Replacement and removal against the loop that defines them: find the first occurrence, rebuild the text,
/// and start again from the front.
#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using vorlund::CObjectNotFoundException;
using vorlund::CString;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::Narrow;

/// The text afterwards and the line of the search that ended the loop; 0 when the call returned.
struct TEnd {
    wstring text;
    int line;

    bool operator==(const TEnd&) const = default;
};

void PrintTo(const TEnd& end, std::ostream* stream) {
    *stream << '"' << Narrow(end.text.substr(0, 200)) << "\" of " << end.text.size() << ", line " << end.line;
}

/// The loop itself. The text is left empty when the loop makes more than `maxEdits` edits.
TEnd Loop(wstring text, const wstring& from, const wstring& to, std::size_t maxEdits = 1000000) {
    for (std::size_t edits = 0; edits <= maxEdits; ++edits) {
        if (from.size() > text.size()) return {text, 0};
        const std::size_t place = text.find(from);
        if (place == wstring::npos) return {text, 155};
        text = text.substr(0, place) + to + text.substr(place + from.size(), 65535);
    }
    return {wstring(), -1};
}

template <class TAct> TEnd EndOf(CString& text, const TAct& act) {
    try {
        act();
    } catch (const CObjectNotFoundException& exception) {
        return {wstring(text), exception.GetLine()};
    } catch (const vorlund::CInvalidParameterException&) {
        return {wstring(), -1};
    }
    return {wstring(text), 0};
}

void ExpectLoop(const wstring& content, const wstring& from, const wstring& to) {
    SCOPED_TRACE(Narrow(content.substr(0, 200)) + " of " + std::to_string(content.size()) + ": " +
                 Narrow(from) + " by " + Narrow(to));
    CString text(content.c_str());
    const TEnd end = EndOf(text, [&] { text.Replace(from.c_str(), to.c_str()); });
    const bool holdsNeedle = to.find(from) != wstring::npos;
    // What never ends is refused before it edits.
    const TEnd expected = Loop(content, from, to, holdsNeedle ? 0 : 1000000);
    ASSERT_EQ(end, expected);
    if (end.line == -1) {
        ASSERT_EQ(wstring(text), content);
    }
}

wstring RandomText(std::mt19937& random, std::size_t length, unsigned int alphabet) {
    wstring text(length, 0);
    for (wchar& unit : text) unit = static_cast<wchar>('a' + random() % alphabet);
    return text;
}

TEST(StringModel, EndsOfReplacementsThatBeginNeedlesOrDoNot) {
    // The replacement is a part of the needle.
    ExpectLoop(VRL_L("aabccabcabcbc"), VRL_L("abc"), VRL_L("b"));
    ExpectLoop(VRL_L("aabccabcabcbc"), VRL_L("abc"), VRL_L("bc"));
    // It goes on as the needle does, for one unit alone.
    ExpectLoop(VRL_L("aabccabcabcbc"), VRL_L("abc"), VRL_L("bx"));
    // It holds the first unit of the needle, at its end or not.
    ExpectLoop(VRL_L("aabbabab"), VRL_L("ab"), VRL_L("xa"));
    ExpectLoop(VRL_L("aabbabab"), VRL_L("ab"), VRL_L("ax"));
    // Both end in the same units.
    ExpectLoop(VRL_L("abbabbbbabb"), VRL_L("abb"), VRL_L("bbx"));
}

TEST(StringModel, OccurrencesThatAnEditCutsOffAreNotEdited) {
    // The second edit completes an occurrence with a long rest of its replacement behind it. That much less
    // of the text stays, so the occurrence that ends with it is cut.
    constexpr std::size_t kKept = 65535;
    const wstring replacement = VRL_L("b") + wstring(99, VRL_L('x'));
    wstring content = VRL_L("abaab") + wstring(kKept - 5, VRL_L('y')) + VRL_L("ab") + wstring(50, VRL_L('z'));
    ASSERT_EQ(content.find(VRL_L("ab"), 5), kKept);
    ExpectLoop(content, VRL_L("ab"), replacement);
}

TEST(StringModel, EveryShortReplacement) {
    // All needles and replacements of up to 3 and 2 letters of two, in all texts of up to 7 letters.
    const auto texts = [](std::size_t longest) {
        std::vector<wstring> all{wstring()};
        for (std::size_t i = 0; i < all.size(); ++i)
            if (all[i].size() < longest)
                for (const wchar unit : {wchar{'a'}, wchar{'b'}}) all.push_back(all[i] + unit);
        return all;
    };
    for (const wstring& content : texts(7))
        for (const wstring& from : texts(3))
            for (const wstring& to : texts(2))
                if (!from.empty()) ExpectLoop(content, from, to);
}

TEST(StringModel, RandomReplacements) {
    std::mt19937 random(5);
    for (int round = 0; round < 6000; ++round) {
        const unsigned int alphabet = 1 + random() % 3;
        const wstring content = RandomText(random, random() % 60, alphabet);
        const wstring from = RandomText(random, 1 + random() % 5, alphabet);
        // Longer ones often take more edits than a test can wait for; the rows below have some of them.
        const wstring to = RandomText(random, random() % (from.size() + 1), alphabet);
        ExpectLoop(content, from, to);
        if (HasFatalFailure()) return;
    }
}

TEST(StringModel, RandomReplacementsThatGrow) {
    std::mt19937 random(6);
    for (int round = 0; round < 2000; ++round) {
        const wstring content = RandomText(random, random() % 40, 3);
        const wstring from = RandomText(random, 1 + random() % 4, 3);
        const wstring to = RandomText(random, from.size() + 1 + random() % 3, 3);
        const TEnd expected = Loop(content, from, to, 200);
        if (expected.line == -1) continue;
        CString text(content.c_str());
        ASSERT_EQ(EndOf(text, [&] { text.Replace(from.c_str(), to.c_str()); }), expected)
            << Narrow(content) << ": " << Narrow(from) << " by " << Narrow(to);
    }
}

TEST(StringModel, LongReplacementsThatReachBack) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        // Nested needles: each removal brings the outer one together.
        const wstring from = RandomText(random, 2 + random() % 30, 2);
        wstring content = RandomText(random, random() % 100, 2);
        for (int depth = 0; depth < 40; ++depth) {
            const std::size_t place = random() % (content.size() + 1);
            content.insert(place, from);
        }
        ExpectLoop(content, from, from.substr(0, random() % from.size()));
        ExpectLoop(content, from, from.substr(random() % from.size() + 1));
        ExpectLoop(content, from, wstring());
        if (HasFatalFailure()) return;
    }
}

TEST(StringModel, RandomRemovals) {
    std::mt19937 random(8);
    for (int round = 0; round < 3000; ++round) {
        const unsigned int alphabet = 1 + random() % 3;
        const wstring content = RandomText(random, random() % 80, alphabet);
        const wstring removed = RandomText(random, 1 + random() % 4, alphabet);
        TEnd expected = Loop(content, removed, wstring());
        CString text(content.c_str());
        ASSERT_EQ(EndOf(text, [&] { text.Remove(removed.c_str()); }), expected);
        // The narrow search raises at both ends.
        expected.line = expected.line ? 169 : 163;
        text = content.c_str();
        ASSERT_EQ(EndOf(text, [&] { text.Remove(Narrow(removed).c_str()); }), expected);
        if (removed.size() > 1) continue;
        expected.line = 141;
        text = content.c_str();
        ASSERT_EQ(EndOf(text, [&] { text.Remove(removed[0]); }), expected);
    }
}

/// Each edit keeps 65535 units behind the edited place, so the first one cuts a longer text, and an edit that
/// reaches back cuts again.
TEST(StringModel, TailsAroundTheirLimit) {
    const std::size_t limit = 65535;
    for (const std::size_t before : {std::size_t{0}, std::size_t{3}, std::size_t{70000}}) {
        for (const std::size_t tail : {limit - 2, limit - 1, limit, limit + 1, limit + 2, 3 * limit}) {
            const wstring front(before, '.');
            const wstring back(tail - 4, '-');
            // The last occurrence is cut through, cut off, or kept.
            const wstring content = front + VRL_L("ab") + back + VRL_L("abab");
            ExpectLoop(content, VRL_L("ab"), VRL_L("x"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("xy"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("xyz"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("b"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("bb"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("ba"));
            ExpectLoop(content, VRL_L("ab"), VRL_L("bba"));
            ExpectLoop(content, VRL_L("ab"), VRL_L(""));
            ExpectLoop(content, VRL_L("a"), VRL_L("c"));
            ExpectLoop(content, VRL_L("a"), VRL_L(""));
            ExpectLoop(content, content.substr(before, 70000), VRL_L("x"));
        }
    }
}

TEST(StringModel, ReplacementsLongerThanTheTailLimit) {
    const wstring to = wstring(65530, 'c') + VRL_L("a");
    for (const std::size_t tail : {0u, 3u, 10u, 70000u}) {
        // Behind the first replacement is "b" or a part of it, so the next occurrence lies behind 65530
        // units.
        ExpectLoop(VRL_L("xab") + wstring(tail, 'b'), VRL_L("ab"), wstring(65530, 'c') + VRL_L("b"));
        ExpectLoop(VRL_L("xabb") + wstring(tail, 'd'), VRL_L("ab"), to);
        ExpectLoop(VRL_L("aabb") + wstring(tail, 'd'), VRL_L("ab"), VRL_L("b") + wstring(70000, 'c'));
        ExpectLoop(VRL_L("aaab") + wstring(tail, 'd'), VRL_L("ab"), VRL_L("b") + wstring(70000, 'c'));
        ExpectLoop(VRL_L("abab") + wstring(tail, 'd'), VRL_L("ab"), wstring(70000, 'c'));
    }
}

TEST(StringModel, RandomTextsAroundTheTailLimit) {
    std::mt19937 random(9);
    for (int round = 0; round < 12; ++round) {
        const wstring front = RandomText(random, random() % 30, 2);
        const wstring back = RandomText(random, random() % 30, 2);
        const wstring content = front + VRL_L("ab") + wstring(65500 + random() % 60, '-') + back;
        const wstring from = RandomText(random, 2 + random() % 3, 2);
        ExpectLoop(content, from, RandomText(random, random() % from.size(), 2));
        if (HasFatalFailure()) return;
    }
}

TEST(StringModel, ArgumentsThatArePartsOfTheText) {
    for (std::size_t fromAt = 0; fromAt < 8; ++fromAt) {
        for (std::size_t toAt = 0; toAt <= 8; ++toAt) {
            const wstring content = VRL_L("abcabcab");
            const wstring from = content.substr(fromAt);
            const wstring to = content.substr(toAt);
            CString text(content.c_str());
            const TEnd end =
                EndOf(text, [&] { text.Replace(text.GetBuffer() + fromAt, text.GetBuffer() + toAt); });
            EXPECT_EQ(end, Loop(content, from, to, to.find(from) != wstring::npos ? 0 : 1000));
        }
        CString text("abcabcab");
        const TEnd end = EndOf(text, [&] { text.Remove(text.GetBuffer() + fromAt); });
        EXPECT_EQ(end, Loop(VRL_L("abcabcab"), wstring(VRL_L("abcabcab")).substr(fromAt), wstring()));
    }
}

TEST(StringModel, RandomRanges) {
    std::mt19937 random(10);
    for (int round = 0; round < 20000; ++round) {
        const wstring content = RandomText(random, random() % 12, 26);
        const int length = static_cast<int>(content.size());
        const int start = static_cast<int>(random() % 40) - 20;
        const int count = static_cast<int>(random() % 40) - 20;
        int first = start < 0 ? std::max(length + start, 0) : std::min(start, length);
        int end = count < 0 ? std::max(length + count, first) : std::min(first + count, length);
        if (start >= length) first = end = length;
        const auto from = static_cast<std::size_t>(first);
        const auto size = static_cast<std::size_t>(end - first);
        CString text(content.c_str());
        ASSERT_EQ(wstring(text.SubStr(start, count)), content.substr(from, size));
        text.Remove(start, count);
        ASSERT_EQ(wstring(text), wstring(content).erase(from, size));
    }
}

} // namespace
