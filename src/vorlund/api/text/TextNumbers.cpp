#include "vorlund/api/text/TextNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace vorlund {
namespace {

/// Longer than any buffer that is formatted into, so that a cut here never shows.
constexpr int kNumberCapacity = 1501;
/// More digits behind the point would never be printed: no buffer has room for them.
constexpr int kMaxPrecision = 5000;

std::int64_t LengthOf(std::string_view text) {
    return static_cast<std::int64_t>(text.size());
}

/// A number: padding, prefix, zeros, digits. `count` is the full number of digits, of which `digits` may hold
/// only the first.
void PutNumber(CTextOutput& output, const TFormatDirective& directive, std::string_view prefix,
               std::int64_t zeros, std::string_view digits, std::int64_t count) {
    if (zeros < 0) zeros = 0;
    const std::int64_t padding = directive.width - LengthOf(prefix) - zeros - count;
    if (!directive.left) output.Fill(' ', padding);
    output.Put(prefix.data(), LengthOf(prefix));
    output.Fill('0', zeros);
    output.Put(digits.data(), LengthOf(digits));
    if (directive.left) output.Fill(' ', padding);
}

std::string_view SignOf(const TFormatDirective& directive, bool isNegative) {
    if (isNegative) return "-";
    if (directive.plus) return "+";
    return directive.space ? " " : "";
}

/// `value`, or what it becomes with `digits` hexadecimal digits behind the point if it lies in the middle and
/// the lower neighbour is even: there one C runtime rounds down and another rounds up.
double SettleHexTie(double value, int digits) {
    constexpr int kAllDigits = 13;
    if (digits < 0 || digits >= kAllDigits || value < std::numeric_limits<double>::min()) return value;
    int exponent = 0;
    // From 0.5 to 1: what is printed has one more bit before the point.
    const double fraction = std::frexp(value, &exponent);
    const int bits = 4 * digits + 1;
    const double scaled = std::ldexp(fraction, bits);
    const double below = std::floor(scaled);
    const bool isEven = std::fmod(below, 2.0) == 0;
    return scaled - below == 0.5 && isEven ? std::ldexp(below, exponent - bits) : value;
}

/// The digits of a finite number that is not negative, as C99 prints them. The narrow `snprintf` of both C
/// runtimes gives the same digits. Returns the full length, which may be beyond the buffer.
template <class TFloat>
std::int64_t PrintFloat(char (&buffer)[kNumberCapacity], const TFormatDirective& directive, TFloat value) {
    char format[8] = "%";
    char* at = format + 1;
    if (directive.alternate) *at++ = '#';
    *at++ = '.';
    *at++ = '*';
    if constexpr (sizeof(TFloat) > sizeof(double)) *at++ = 'L';
    *at++ = static_cast<char>(directive.conversion);
    *at = 0;
    const int precision = directive.precision < kMaxPrecision ? directive.precision : kMaxPrecision;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::int64_t length = std::snprintf(buffer, kNumberCapacity, format, precision, value);
#pragma GCC diagnostic pop
    if (length < 0) return 0;

    // The point is the locale's, which may be several bytes: what is no digit, letter or sign of a number.
    const auto isPoint = [](char c) {
        constexpr std::string_view kOthers("0123456789ABCDEFabcdefPpXx+-\0", 29);
        return kOthers.find(c) == std::string_view::npos;
    };
    char* point = buffer;
    while (*point && !isPoint(*point)) ++point;
    if (!*point) return length;
    *point++ = '.';
    const char* rest = point;
    while (isPoint(*rest)) ++rest;
    length -= rest - point;
    while ((*point++ = *rest++)) {
    }
    return length;
}

template <class TFloat>
void PutFloating(CTextOutput& output, const TFormatDirective& directive, TFloat value) {
    const bool isUpper = directive.conversion >= 'A' && directive.conversion <= 'Z';
    const std::string_view sign = SignOf(directive, std::signbit(value));
    if (!std::isfinite(value)) {
        const char* const name = std::isnan(value) ? (isUpper ? "NAN" : "nan") : (isUpper ? "INF" : "inf");
        PutNumber(output, directive, sign, 0, name, 3);
        return;
    }
    const bool isHex = directive.conversion == 'a' || directive.conversion == 'A';
    TFloat magnitude = std::fabs(value);
    if constexpr (std::is_same_v<TFloat, double>) {
        if (isHex) magnitude = SettleHexTie(magnitude, directive.precision);
    }
    char buffer[kNumberCapacity];
    std::int64_t length = PrintFloat(buffer, directive, magnitude);
    std::string_view stored(buffer,
                            static_cast<std::size_t>(std::min<std::int64_t>(length, kNumberCapacity - 1)));

    // "0x" belongs to the prefix: zeros come after it.
    const std::size_t base = isHex ? std::min<std::size_t>(2, stored.size()) : 0;
    char prefix[3];
    const std::size_t prefixLength = sign.copy(prefix, 1) + stored.copy(prefix + sign.size(), base);
    stored.remove_prefix(base);
    length -= static_cast<std::int64_t>(base);

    const std::int64_t room = directive.width - static_cast<std::int64_t>(prefixLength) - length;
    const std::int64_t zeros = directive.zero && !directive.left ? room : 0;
    PutNumber(output, directive, {prefix, prefixLength}, zeros, stored, length);
}

} // namespace

void PutSigned(CTextOutput& output, const TFormatDirective& directive, std::int64_t value) {
    const std::uint64_t magnitude = static_cast<std::uint64_t>(value);
    PutUnsigned(output, directive, SignOf(directive, value < 0), value < 0 ? 0 - magnitude : magnitude);
}

void PutUnsigned(CTextOutput& output, const TFormatDirective& directive, std::string_view prefix,
                 std::uint64_t value) {
    const bool isHex = directive.conversion == 'x' || directive.conversion == 'X';
    const unsigned int base = isHex ? 16 : directive.conversion == 'o' ? 8 : 10;
    const char* const digitTable = directive.conversion == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";

    char digits[24];
    char* const end = digits + sizeof(digits);
    char* first = end;
    for (std::uint64_t rest = value; rest != 0; rest /= base) *--first = digitTable[rest % base];
    const std::int64_t count = end - first;

    std::int64_t least = directive.precision < 0 ? 1 : directive.precision;
    if (directive.precision < 0 && directive.zero && !directive.left) {
        least = std::max<std::int64_t>(1, directive.width - LengthOf(prefix));
    }
    if (base == 8 && directive.alternate && least <= count) least = count + 1;
    PutNumber(output, directive, prefix, least - count, {first, end}, count);
}

void PutFloat(CTextOutput& output, const TFormatDirective& directive, double value) {
    PutFloating(output, directive, value);
}

void PutFloat(CTextOutput& output, const TFormatDirective& directive, long double value) {
    PutFloating(output, directive, value);
}

} // namespace vorlund
