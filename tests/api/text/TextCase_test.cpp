/// The table of upper-case forms as a whole; single letters are rows of the comparison of texts.
#include "vorlund/api/text/TextCase.h"

#include <gtest/gtest.h>

namespace {

using vorlund::UpperCaseUnit;
using vorlund::wchar;

unsigned int Upper(unsigned int unit) {
    return static_cast<unsigned int>(UpperCaseUnit(static_cast<wchar>(unit)));
}

TEST(TextCase, Ascii) {
    for (unsigned int unit = 0; unit < 0x80; ++unit)
        EXPECT_EQ(Upper(unit), unit >= 'a' && unit <= 'z' ? unit - 32 : unit);
}

TEST(TextCase, EveryUnit) {
    unsigned int letters = 0;
    for (unsigned int unit = 0; unit < 0x10000; ++unit) {
        const unsigned int upper = Upper(unit);
        // An upper-case form is its own, and nothing becomes the terminator.
        EXPECT_EQ(Upper(upper), upper) << unit;
        EXPECT_EQ(upper == 0, unit == 0) << unit;
        letters += upper != unit;
    }
    // As many as Unicode 15.0 has in the Basic Multilingual Plane.
    EXPECT_EQ(letters, 1190u);
}

TEST(TextCase, SurrogatesAndPrivateUnitsStay) {
    for (unsigned int unit = 0xD800; unit < 0xF900; ++unit) EXPECT_EQ(Upper(unit), unit);
    // What bytes beyond ASCII become.
    for (unsigned int unit = 0xFF80; unit < 0x10000; ++unit) EXPECT_EQ(Upper(unit), unit);
}

} // namespace
