#include "vorlund/api/text/TextCase.h"

#include <array>
#include <cstdint>

// A two-level table, laid out by the compiler: the high byte of a unit chooses a page, the low byte the
// distance to its upper-case form. The many pages without letters are one page of zeros.

namespace vorlund {
namespace {

struct TRange {
    unsigned int first;
    unsigned int last;
    unsigned int step;
    int distance;
};

constexpr TRange kRanges[] = {
#include "vorlund/api/text/UpperCaseRanges.inc"
};

constexpr unsigned int kPageUnits = 256;

consteval bool HasLetters(unsigned int page) {
    for (const TRange& range : kRanges)
        for (unsigned int unit = range.first; unit <= range.last; unit += range.step)
            if (unit / kPageUnits == page) return true;
    return false;
}

consteval unsigned int CountPages() {
    unsigned int count = 1;
    for (unsigned int page = 0; page < 65536 / kPageUnits; ++page) count += HasLetters(page);
    return count;
}

struct TTable {
    /// Which page of distances serves a high byte; 0 is the page of zeros.
    std::array<std::uint8_t, 65536 / kPageUnits> pages{};
    std::array<std::array<std::uint16_t, kPageUnits>, CountPages()> distances{};
};

consteval TTable MakeTable() {
    TTable table;
    std::uint8_t used = 1;
    for (const TRange& range : kRanges) {
        for (unsigned int unit = range.first; unit <= range.last; unit += range.step) {
            std::uint8_t& page = table.pages[unit / kPageUnits];
            if (!page) page = used++;
            table.distances[page][unit % kPageUnits] = static_cast<std::uint16_t>(range.distance);
        }
    }
    return table;
}

constexpr TTable kTable = MakeTable();

} // namespace

wchar UpperCaseUnit(wchar unit) {
    const auto value = static_cast<std::uint16_t>(unit);
    return static_cast<wchar>(value + kTable.distances[kTable.pages[value / kPageUnits]][value % kPageUnits]);
}

} // namespace vorlund
