/// Every set of text kernels against the plain loops, and those against rules written here: every alignment,
/// every length around the block sizes, and buffers whose last unit is the last of a page, so that a read too
/// far faults.
#include "vorlund/api/text/TextKernels.h"

#include "support/GuardedUnits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using vorlund::kTextNotFound;
using vorlund::TTextRoutines;
using vorlund::TTextSet;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::CGuardedUnits;

/// Beyond several blocks of every size in use.
constexpr std::size_t kLengths = 71;
constexpr std::size_t kAlignments = 32;

wstring RandomText(std::mt19937& random, std::size_t length, unsigned int alphabet) {
    wstring text(length, 0);
    for (wchar& unit : text) unit = static_cast<wchar>('a' + random() % alphabet);
    return text;
}

std::vector<const TTextSet*> SupportedSets() {
    std::vector<const TTextSet*> sets;
    for (const TTextSet* set : vorlund::GetTextSets())
        if (set->isSupported()) sets.push_back(set);
    return sets;
}

/// Each supported set in turn; the name of the test says which one ran.
class TextKernels : public testing::TestWithParam<const TTextSet*> {
protected:
    static const TTextRoutines& Set() { return GetParam()->routines; }
    static const TTextRoutines& Reference() { return vorlund::GetTextSets().front()->routines; }
};

INSTANTIATE_TEST_SUITE_P(Sets, TextKernels, testing::ValuesIn(SupportedSets()),
                         [](const auto& set) { return std::string(set.param->name); });

TEST_P(TextKernels, LengthAtEveryAlignment) {
    const CGuardedUnits memory;
    for (std::size_t length = 0; length < 300; ++length) {
        for (std::size_t distance = 0; distance < kAlignments; ++distance) {
            // The units that come close to 0 after packing or by their low byte.
            wstring text(length, 0x8000);
            for (std::size_t i = 0; i < length; ++i) text[i] = i % 3 ? 0x0100 : i % 2 ? 0x8000 : 0x00FF;
            const wchar* place = memory.PutTerminated(text, distance);
            ASSERT_EQ(Set().length(place), length) << distance;
            for (const std::size_t limit : {std::size_t{0}, length / 2, length, length + 1, length + 100})
                ASSERT_EQ(Set().boundedLength(place, limit), std::min(length, limit)) << distance;
        }
    }
}

TEST_P(TextKernels, BoundedLengthReadsNothingBehindItsLimit) {
    const CGuardedUnits memory;
    for (std::size_t length = 0; length < kLengths; ++length) {
        const wchar* place = memory.PutAtEnd(wstring(length, 'a'));
        ASSERT_EQ(Set().boundedLength(place, length), length);
    }
}

TEST_P(TextKernels, FirstAndLastUnitOfTerminatedTexts) {
    const CGuardedUnits memory;
    for (std::size_t length = 0; length < kLengths; ++length) {
        for (std::size_t distance = 0; distance < kAlignments; ++distance) {
            for (std::size_t at = 0; at <= length; ++at) {
                wstring text(length, 0x0161);
                if (at < length) text[at] = 0x6101;
                const wchar* place = memory.PutTerminated(text, distance);
                const std::size_t expected = at < length ? at : kTextNotFound;
                ASSERT_EQ(Set().findFirstUnitOfTerminated(place, 0x6101), expected)
                    << length << ' ' << distance;
                ASSERT_EQ(Set().findLastUnitOfTerminated(place, 0x6101), expected)
                    << length << ' ' << distance;
            }
            const wchar* place = memory.PutTerminated(wstring(length, 'x'), distance);
            ASSERT_EQ(Set().findFirstUnitOfTerminated(place, wchar{0}), length);
            ASSERT_EQ(Set().findLastUnitOfTerminated(place, wchar{0}), length);
            ASSERT_EQ(Set().findFirstUnitOfTerminated(place, 'x'), length ? 0 : kTextNotFound);
            ASSERT_EQ(Set().findLastUnitOfTerminated(place, 'x'), length ? length - 1 : kTextNotFound);
        }
    }
}

TEST_P(TextKernels, UnitsInRanges) {
    const CGuardedUnits memory;
    std::mt19937 random(1);
    for (std::size_t length = 0; length < 2 * kLengths; ++length) {
        for (unsigned int alphabet = 1; alphabet < 40; alphabet += 3) {
            const wstring text = RandomText(random, length, alphabet);
            const wchar* place = memory.PutAtEnd(text);
            const auto unit = static_cast<wchar>('a' + random() % alphabet);
            ASSERT_EQ(Set().findFirstUnit(place, length, unit),
                      Reference().findFirstUnit(place, length, unit));
            ASSERT_EQ(Set().findLastUnit(place, length, unit), Reference().findLastUnit(place, length, unit));
        }
    }
}

TEST_P(TextKernels, RangesMayHoldZeros) {
    const CGuardedUnits memory;
    wstring text(40, 'a');
    text[20] = 0;
    text[30] = 'b';
    const wchar* place = memory.PutAtEnd(text);
    EXPECT_EQ(Set().findFirstUnit(place, 40, 'b'), 30u);
    EXPECT_EQ(Set().findLastUnit(place, 40, wchar{0}), 20u);
    EXPECT_EQ(Set().findFirstText(place, 40, VRL_L("ab"), 2), 29u);
}

TEST_P(TextKernels, CompareAtEveryPairOfAlignments) {
    const CGuardedUnits leftMemory;
    const CGuardedUnits rightMemory;
    const wchar values[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF};
    for (std::size_t length = 0; length < 40; ++length) {
        for (std::size_t distance = 0; distance < 16; ++distance) {
            const wstring text(length, 0x8001);
            for (std::size_t at = 0; at <= length; ++at) {
                for (const wchar value : values) {
                    wstring other = text;
                    if (at < length) other[at] = value;
                    const wchar* left = leftMemory.PutTerminated(text, distance);
                    const wchar* right = rightMemory.PutTerminated(other, at % 16);
                    const int expected = Reference().compare(left, right);
                    ASSERT_EQ(Set().compare(left, right), expected);
                    ASSERT_EQ(Set().compare(right, left), -expected);
                }
            }
        }
    }
}

TEST_P(TextKernels, CompareAcrossPages) {
    const CGuardedUnits leftMemory;
    const CGuardedUnits rightMemory;
    // Both texts cross a page boundary, at different places.
    for (std::size_t distance = 0; distance < 20; ++distance) {
        const wstring text(2048 + 100, 'x');
        const wchar* left = leftMemory.PutTerminated(text);
        for (std::size_t at = text.size() - 120; at <= text.size(); ++at) {
            wstring other = text;
            if (at < other.size()) other[at] = 'y';
            const wchar* right = rightMemory.PutTerminated(other, distance);
            ASSERT_EQ(Set().compare(left, right), at < text.size() ? -1 : 0) << at;
        }
    }
}

TEST_P(TextKernels, CompareOfEqualAddresses) {
    const wchar* text = VRL_L("the same place");
    EXPECT_EQ(Set().compare(text, text), 0);
}

TEST_P(TextKernels, TextsOfEveryLengthInTextsOfEveryLength) {
    const CGuardedUnits memory;
    const CGuardedUnits needleMemory;
    std::mt19937 random(2);
    for (std::size_t length = 0; length < kLengths; ++length) {
        for (std::size_t needleLength = 0; needleLength <= length + 1; ++needleLength) {
            for (unsigned int alphabet = 1; alphabet < 4; ++alphabet) {
                const wchar* text = memory.PutAtEnd(RandomText(random, length, alphabet));
                const wchar* needle = needleMemory.PutAtEnd(RandomText(random, needleLength, alphabet));
                ASSERT_EQ(Set().findFirstText(text, length, needle, needleLength),
                          Reference().findFirstText(text, length, needle, needleLength));
                ASSERT_EQ(Set().findLastText(text, length, needle, needleLength),
                          Reference().findLastText(text, length, needle, needleLength));
            }
        }
    }
}

TEST_P(TextKernels, NeedlesCutFromTheirTexts) {
    const CGuardedUnits memory;
    std::mt19937 random(3);
    for (int round = 0; round < 20000; ++round) {
        const wstring content = RandomText(random, 1 + random() % 300, 1 + random() % 3);
        const std::size_t from = random() % content.size();
        wstring part = content.substr(from, 1 + random() % (content.size() - from));
        // Most are almost there: one unit is another.
        if (round % 4) part[random() % part.size()] = static_cast<wchar>('a' + random() % 3);
        const wchar* text = memory.PutAtEnd(content);
        ASSERT_EQ(Set().findFirstText(text, content.size(), part.data(), part.size()),
                  Reference().findFirstText(text, content.size(), part.data(), part.size()));
        ASSERT_EQ(Set().findLastText(text, content.size(), part.data(), part.size()),
                  Reference().findLastText(text, content.size(), part.data(), part.size()));
    }
}

TEST_P(TextKernels, AllPlacesUpToACapacity) {
    const CGuardedUnits memory;
    std::mt19937 random(11);
    for (int round = 0; round < 10000; ++round) {
        const unsigned int alphabet = 1 + random() % 3;
        const wstring content = RandomText(random, random() % 120, alphabet);
        const wstring needle = RandomText(random, 1 + random() % 5, alphabet);
        const std::size_t capacity = random() % 4 ? 200 : random() % 8;
        const wchar* text = memory.PutAtEnd(content);
        std::vector<std::uint32_t> places(capacity + 1, 0xABCD);
        std::vector<std::uint32_t> expected = places;
        const std::size_t count =
            Set().findAllText(text, content.size(), needle.data(), needle.size(), places.data(), capacity);
        ASSERT_EQ(count, Reference().findAllText(text, content.size(), needle.data(), needle.size(),
                                                 expected.data(), capacity));
        ASSERT_EQ(places, expected);
        // The reference against the search for one.
        std::size_t behind = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = content.find(needle, behind);
            ASSERT_EQ(places[i], place);
            behind = place + needle.size();
        }
        if (count < capacity) {
            ASSERT_EQ(content.find(needle, behind), wstring::npos);
        }
    }
}

TEST_P(TextKernels, ReplaceUnitKeepsTheRest) {
    const CGuardedUnits memory;
    std::mt19937 random(4);
    for (std::size_t length = 0; length < kLengths; ++length) {
        wstring expected = RandomText(random, length, 3);
        wchar* place = memory.PutTerminated(expected, length % 16);
        Set().replaceUnit(place, length, 'b', 0xE000);
        for (wchar& unit : expected) unit = unit == 'b' ? 0xE000 : unit;
        ASSERT_EQ(wstring(place, length), expected);
        ASSERT_EQ(place[length], wchar{0});
    }
}

TEST_P(TextKernels, WidenExtendsTheSign) {
    const CGuardedUnits memory;
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        wchar* place = memory.End() - length;
        // What the round before has written there must not pass for the result.
        std::fill_n(place, length, wchar{0x5555});
        Set().widen(place, bytes.data() + bytes.size() - length, length);
        for (std::size_t i = 0; i < length; ++i) {
            const unsigned int byte = static_cast<unsigned char>(bytes[bytes.size() - length + i]);
            ASSERT_EQ(static_cast<unsigned int>(place[i]), byte < 0x80 ? byte : 0xFF00 + byte);
        }
    }
}

TEST_P(TextKernels, CopiesThatLookForAUnit) {
    const CGuardedUnits memory;
    std::mt19937 random(5);
    for (std::size_t length = 0; length < kLengths; ++length) {
        const wstring text = RandomText(random, length, 3);
        const std::vector<std::uint8_t> bytes(text.begin(), text.end());
        wchar* const place = memory.End() - length;
        const auto expectCopy = [&](const wstring& source, wchar unit) {
            const bool isThere = source.find(unit) != wstring::npos;
            std::fill_n(place, length, wchar{0x5555});
            ASSERT_EQ(Set().copyAndLook(place, source.data(), length, unit), isThere);
            ASSERT_EQ(wstring(place, length), source);
        };
        expectCopy(text, 'z');
        std::fill_n(place, length, wchar{0x5555});
        ASSERT_FALSE(Set().widenBytesAndLook(place, bytes.data(), length, 'z'));
        ASSERT_EQ(wstring(place, length), text);
        // At each place.
        for (std::size_t i = 0; i < length; ++i) {
            wstring changed = text;
            changed[i] = 0xFF0D;
            expectCopy(changed, 0xFF0D);
            expectCopy(changed, 0x0D);
            std::vector<std::uint8_t> changedBytes = bytes;
            changedBytes[i] = 0xE9;
            ASSERT_TRUE(Set().widenBytesAndLook(place, changedBytes.data(), length, 0xE9));
            ASSERT_EQ(static_cast<unsigned int>(place[i]), 0xE9u);
            ASSERT_FALSE(Set().widenBytesAndLook(place, changedBytes.data(), length, 0xFFE9));
        }
    }
}

// ---- the choice

TEST(TextKernelsSets, TheReferenceComesFirst) {
    EXPECT_STREQ(vorlund::GetTextSets().front()->name, "scalar");
    EXPECT_TRUE(vorlund::GetTextSets().front()->isSupported());
}

TEST(TextKernelsSets, TheLastSupportedSetIsInUse) {
    EXPECT_EQ(&vorlund::GetTextSetInUse(), SupportedSets().back());
}

/// The functions that the library calls hand their arguments on as they are.
TEST(TextKernelsSets, FunctionsCallTheirRoutines) {
    const wchar* const text = VRL_L("abcabc");
    EXPECT_EQ(vorlund::TextLength(text), 6u);
    EXPECT_EQ(vorlund::TextLength(text, 4), 4u);
    EXPECT_EQ(vorlund::CompareText(text, VRL_L("abd")), -1);
    EXPECT_EQ(vorlund::FindFirstUnit(text, 'b'), 1u);
    EXPECT_EQ(vorlund::FindLastUnit(text, 'b'), 4u);
    EXPECT_EQ(vorlund::FindFirstUnit(text, 3, 'c'), 2u);
    EXPECT_EQ(vorlund::FindLastUnit(text, 4, 'b'), 1u);
    EXPECT_EQ(vorlund::FindFirstText(text, 6, VRL_L("bc"), 2), 1u);
    EXPECT_EQ(vorlund::FindLastText(text, 6, VRL_L("bc"), 2), 4u);
    std::uint32_t places[3] = {};
    EXPECT_EQ(vorlund::FindAllText(text, 6, VRL_L("bc"), 2, places, 3), 2u);
    EXPECT_EQ(places[1], 4u);
    wchar changed[] = {'a', 'b', 'a'};
    vorlund::ReplaceUnit(changed, 2, 'a', 'x');
    EXPECT_EQ(wstring(changed, 3), wstring(VRL_L("xba")));
    vorlund::WidenText(changed, "cd", 2);
    EXPECT_EQ(wstring(changed, 3), wstring(VRL_L("cda")));
    EXPECT_TRUE(vorlund::CopyTextAndLook(changed, VRL_L("ef"), 2, 'f'));
    EXPECT_EQ(wstring(changed, 3), wstring(VRL_L("efa")));
    const std::uint8_t bytes[] = {'g', 'h'};
    EXPECT_TRUE(vorlund::WidenBytesAndLook(changed, bytes, 2, 'h'));
    EXPECT_FALSE(vorlund::WidenBytesAndLook(changed, bytes, 1, 'h'));
    EXPECT_EQ(wstring(changed, 3), wstring(VRL_L("gha")));
}

} // namespace
