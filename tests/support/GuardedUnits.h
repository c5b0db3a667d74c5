/// \file
/// Memory that ends where the next page faults.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <string_view>

namespace vorlund::test {

/// Two readable and writable pages with a page behind them that faults on any access, so that a read beyond
/// the last unit ends the test program.
class CGuardedUnits {
public:
    CGuardedUnits();
    ~CGuardedUnits();
    CGuardedUnits(const CGuardedUnits&) = delete;
    CGuardedUnits& operator=(const CGuardedUnits&) = delete;

    /// The place behind the last unit.
    wchar* End() const { return reinterpret_cast<wchar*>(memory_ + size_); }

    /// Copies `text` and a terminator so that `distance` units are between the terminator and the end;
    /// gives the place of the first unit.
    wchar* PutTerminated(std::basic_string_view<wchar> text, std::size_t distance = 0) const {
        wchar* place = End() - distance - 1 - text.size();
        text.copy(place, text.size());
        place[text.size()] = 0;
        return place;
    }

    /// Copies `text`, without a terminator, to the very end.
    wchar* PutAtEnd(std::basic_string_view<wchar> text) const {
        wchar* place = End() - text.size();
        text.copy(place, text.size());
        return place;
    }

private:
    char* memory_;
    /// Bytes before the guard.
    std::size_t size_;
};

} // namespace vorlund::test
