/// Every set of line kernels against plain loops: every length around their blocks, in memory whose last unit
/// is the last of a page, so that an access too far faults.
#include "vorlund/serial/LineKernels.h"

#include "support/GuardedUnits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using vorlund::kLongLine;
using vorlund::kTextNotFound;
using vorlund::TLineRoutines;
using vorlund::TLineSet;
using vorlund::wchar;
using vorlund::wstring;
using vorlund::test::CGuardedUnits;

constexpr std::size_t kLengths = kLongLine + 140;
constexpr wchar kWanted = 13;

std::vector<const TLineSet*> SupportedLineSets() {
    std::vector<const TLineSet*> sets;
    for (const TLineSet* set : vorlund::GetLineSets())
        if (set->isSupported()) sets.push_back(set);
    return sets;
}

/// Every unit but the one that is wanted, also those that have it as one of their bytes.
wstring LineText(std::size_t length) {
    wstring text(length, 0);
    for (std::size_t i = 0; i < length; ++i)
        text[i] = static_cast<wchar>(i % 5 == 0 ? 0x0D00 + i % 13 : i % 5 == 1 ? 0x0E0D : i * 251 + 14);
    std::replace(text.begin(), text.end(), kWanted, wchar{'x'});
    return text;
}

std::vector<std::uint8_t> LineBytes(std::size_t length) {
    std::vector<std::uint8_t> bytes(length);
    for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<std::uint8_t>(i * 167 + 14);
    std::replace(bytes.begin(), bytes.end(), std::uint8_t{kWanted}, std::uint8_t{0xFF});
    return bytes;
}

/// The places that differ for blocks: the first and last ones, and some between.
std::vector<std::size_t> PlacesIn(std::size_t length) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < length; i += i < 40 || i + 40 > length ? 1 : 7) places.push_back(i);
    return places;
}

/// Each supported set in turn; the name of the test says which one ran.
class LineKernels : public testing::TestWithParam<const TLineSet*> {
protected:
    static const TLineRoutines& Set() { return GetParam()->routines; }
    const CGuardedUnits memory_;
    const CGuardedUnits source_;
};

INSTANTIATE_TEST_SUITE_P(Sets, LineKernels, testing::ValuesIn(SupportedLineSets()),
                         [](const auto& set) { return std::string(set.param->name); });

TEST_P(LineKernels, FindTheFirstUnit) {
    for (std::size_t length = kLongLine; length < kLengths; ++length) {
        wstring text = LineText(length);
        ASSERT_EQ(Set().findFirstUnit(source_.PutAtEnd(text), length, kWanted), kTextNotFound) << length;
        text.back() = kWanted;
        for (const std::size_t place : PlacesIn(length)) {
            wstring changed = text;
            changed[place] = kWanted;
            ASSERT_EQ(Set().findFirstUnit(source_.PutAtEnd(changed), length, kWanted), place) << length;
        }
    }
}

TEST_P(LineKernels, CopyUnits) {
    for (std::size_t length = kLongLine; length < kLengths; ++length) {
        wchar* const to = memory_.End() - length;
        const wstring text = LineText(length);
        ASSERT_FALSE(Set().copyTextAndLook(to, source_.PutAtEnd(text), length, kWanted));
        ASSERT_EQ(wstring(to, length), text);
        for (const std::size_t place : PlacesIn(length)) {
            wstring changed = text;
            changed[place] = kWanted;
            ASSERT_TRUE(Set().copyTextAndLook(to, source_.PutAtEnd(changed), length, kWanted)) << place;
        }
    }
}

TEST_P(LineKernels, WidenBytes) {
    for (std::size_t length = kLongLine; length < kLengths; ++length) {
        wchar* const to = memory_.End() - length;
        auto* const from = reinterpret_cast<std::uint8_t*>(source_.End()) - length;
        const std::vector<std::uint8_t> bytes = LineBytes(length);
        std::copy(bytes.begin(), bytes.end(), from);
        ASSERT_FALSE(Set().widenBytesAndLook(to, from, length, kWanted));
        ASSERT_EQ(wstring(to, length), wstring(bytes.begin(), bytes.end()));
        for (const std::size_t place : PlacesIn(length)) {
            from[place] = kWanted;
            ASSERT_TRUE(Set().widenBytesAndLook(to, from, length, kWanted)) << place;
            from[place] = bytes[place];
        }
    }
}

TEST(LineKernelsSets, TheLastSupportedOneIsInUse) {
    EXPECT_STREQ(vorlund::GetLineSets().front()->name, "text");
    EXPECT_EQ(vorlund::lineKernels, SupportedLineSets().back());
}

} // namespace
