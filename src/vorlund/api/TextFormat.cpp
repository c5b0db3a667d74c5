#include "vorlund/api/TextFormat.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace vorlund {
namespace {

/// Longer than any buffer that is formatted into, so that a cut here never shows.
constexpr int kNumberCapacity = 1501;
/// Digits behind the point beyond which nothing can be seen any more.
constexpr int kMaxPrecision = 5000;

enum ELength { kNone, kChar, kShort, kLong, kLongLong, kMaximum, kSize, kWide, kLongDouble };

/// What stands between a percent sign and its conversion letter.
struct TDirective {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    /// Least number of units printed; not negative.
    int width = 0;
    /// Negative when there is none.
    int precision = -1;
    ELength length = kNone;
    wchar conversion = 0;
};

/// Unit `index` of a wide text. A reason that names a path lies in a buffer that another thread's failure may
/// overwrite meanwhile; such a text may be mixed up, but reading it stays defined.
wchar ReadUnit(const wchar* text, std::int64_t index) {
    return __atomic_load_n(text + index, __ATOMIC_RELAXED);
}

wchar ReadUnit(const char* text, std::int64_t index) {
    return static_cast<wchar>(static_cast<signed char>(text[index]));
}

/// The buffer, with all bounds kept in one place.
class COutput {
public:
    COutput(wchar* buffer, std::size_t capacity) : buffer_(buffer), room_(capacity - 1) {}

    bool IsFull() const { return room_ == 0; }

    void Put(wchar unit) {
        if (IsFull()) return;
        *buffer_++ = unit;
        --room_;
        ++written_;
    }

    template <class TUnit> void Put(const TUnit* text, std::int64_t count) {
        for (std::int64_t i = 0; i < count && !IsFull(); ++i) Put(ReadUnit(text, i));
    }

    void Fill(char unit, std::int64_t count) {
        for (; count > 0 && !IsFull(); --count) Put(static_cast<wchar>(unit));
    }

    int End() {
        *buffer_ = 0;
        return written_;
    }

private:
    wchar* buffer_;
    std::size_t room_;
    int written_ = 0;
};

class CFormatter {
public:
    CFormatter(COutput& output, std::va_list arguments) : output_(output) { va_copy(arguments_, arguments); }
    CFormatter(const CFormatter&) = delete;
    CFormatter& operator=(const CFormatter&) = delete;
    ~CFormatter() { va_end(arguments_); }

    void Run(const wchar* format) {
        while (*format && !output_.IsFull()) {
            if (*format != '%') {
                output_.Put(*format++);
                continue;
            }
            TDirective directive;
            const wchar* const end = Parse(format + 1, directive);
            if (!Convert(directive)) {
                // Which argument belongs to it is unknown, so no argument behind it can be taken either.
                while (*format && !output_.IsFull()) output_.Put(*format++);
                return;
            }
            format = end;
        }
    }

private:
    const wchar* Parse(const wchar* format, TDirective& directive);
    const wchar* ParseFlags(const wchar* format, TDirective& directive);
    const wchar* ParseNumber(const wchar* format, int& number);
    const wchar* ParseLength(const wchar* format, ELength& length);
    bool Convert(const TDirective& directive);

    std::int64_t NextSigned(ELength length);
    std::uint64_t NextUnsigned(ELength length);

    template <class TUnit> void PutText(const TDirective& directive, const TUnit* text);
    template <class TUnit> void PutField(const TDirective& directive, const TUnit* text, std::int64_t count);
    void PutSigned(const TDirective& directive);
    void PutInteger(const TDirective& directive, const char* prefix, std::uint64_t value);
    template <class TFloat> void PutFloat(const TDirective& directive, TFloat value);
    void PutNumber(const TDirective& directive, const char* prefix, std::int64_t zeros, const char* digits,
                   std::int64_t count);

    COutput& output_;
    std::va_list arguments_;
};

const wchar* CFormatter::Parse(const wchar* format, TDirective& directive) {
    format = ParseFlags(format, directive);
    format = ParseNumber(format, directive.width);
    if (directive.width < 0) {
        directive.left = true;
        const bool isLowest = directive.width == std::numeric_limits<int>::min();
        directive.width = isLowest ? std::numeric_limits<int>::max() : -directive.width;
    }
    if (*format == '.') {
        directive.precision = 0;
        format = ParseNumber(format + 1, directive.precision);
    }
    format = ParseLength(format, directive.length);
    directive.conversion = *format;
    return *format ? format + 1 : format;
}

const wchar* CFormatter::ParseFlags(const wchar* format, TDirective& directive) {
    for (;; ++format) {
        switch (*format) {
        case '-':
            directive.left = true;
            break;
        case '+':
            directive.plus = true;
            break;
        case ' ':
            directive.space = true;
            break;
        case '#':
            directive.alternate = true;
            break;
        case '0':
            directive.zero = true;
            break;
        default:
            return format;
        }
    }
}

const wchar* CFormatter::ParseNumber(const wchar* format, int& number) {
    if (*format == '*') {
        number = va_arg(arguments_, int);
        return format + 1;
    }
    std::int64_t value = 0;
    constexpr std::int64_t kLimit = std::numeric_limits<int>::max();
    for (; *format >= '0' && *format <= '9'; ++format) {
        value = value * 10 + (*format - '0');
        if (value > kLimit) value = kLimit;
    }
    number = static_cast<int>(value);
    return format;
}

const wchar* CFormatter::ParseLength(const wchar* format, ELength& length) {
    const auto take = [&](ELength found, int count) {
        length = found;
        return format + count;
    };
    switch (*format) {
    case 'h':
        return format[1] == 'h' ? take(kChar, 2) : take(kShort, 1);
    case 'l':
        return format[1] == 'l' ? take(kLongLong, 2) : take(kLong, 1);
    case 'I':
        if (format[1] == '6' && format[2] == '4') return take(kLongLong, 3);
        if (format[1] == '3' && format[2] == '2') return take(kNone, 3);
        return take(kSize, 1);
    case 'w':
        return take(kWide, 1);
    case 'z':
    case 't':
        return take(kSize, 1);
    case 'j':
        return take(kMaximum, 1);
    case 'L':
        return take(kLongDouble, 1);
    default:
        return format;
    }
}

/// Returns false for an unknown conversion.
bool CFormatter::Convert(const TDirective& directive) {
    const bool isShort = directive.length == kShort || directive.length == kChar;
    const bool isLong =
        directive.length == kLong || directive.length == kLongLong || directive.length == kWide;
    switch (directive.conversion) {
    case '%':
        output_.Put('%');
        return true;
    case 'n':
        static_cast<void>(va_arg(arguments_, void*));
        return true;
    case 'c':
    case 'C': {
        const int value = va_arg(arguments_, int);
        const bool isNarrow = isShort || (directive.conversion == 'C' && !isLong);
        const wchar unit = static_cast<wchar>(isNarrow ? static_cast<signed char>(value) : value);
        PutField(directive, &unit, 1);
        return true;
    }
    case 's':
    case 'S':
        if (isShort || (directive.conversion == 'S' && !isLong)) {
            PutText(directive, va_arg(arguments_, const char*));
        } else {
            PutText(directive, va_arg(arguments_, const wchar*));
        }
        return true;
    case 'd':
    case 'i':
        PutSigned(directive);
        return true;
    case 'u':
    case 'o':
        PutInteger(directive, "", NextUnsigned(directive.length));
        return true;
    case 'x':
    case 'X': {
        const std::uint64_t value = NextUnsigned(directive.length);
        const char* const prefix = directive.conversion == 'x' ? "0x" : "0X";
        PutInteger(directive, directive.alternate && value != 0 ? prefix : "", value);
        return true;
    }
    case 'p': {
        TDirective address = directive;
        address.conversion = 'X';
        address.precision = 2 * sizeof(void*);
        PutInteger(address, "", reinterpret_cast<std::uintptr_t>(va_arg(arguments_, void*)));
        return true;
    }
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        if (directive.length == kLongDouble) {
            PutFloat(directive, va_arg(arguments_, long double));
        } else {
            PutFloat(directive, va_arg(arguments_, double));
        }
        return true;
    default:
        return false;
    }
}

std::int64_t CFormatter::NextSigned(ELength length) {
    switch (length) {
    case kChar:
        return static_cast<signed char>(va_arg(arguments_, int));
    case kShort:
        return static_cast<short>(va_arg(arguments_, int));
    case kLong:
        return va_arg(arguments_, long);
    case kLongLong:
    case kLongDouble:
        return va_arg(arguments_, long long);
    case kMaximum:
        return va_arg(arguments_, std::intmax_t);
    case kSize:
        return va_arg(arguments_, std::ptrdiff_t);
    default:
        return va_arg(arguments_, int);
    }
}

std::uint64_t CFormatter::NextUnsigned(ELength length) {
    switch (length) {
    case kChar:
        return static_cast<unsigned char>(va_arg(arguments_, unsigned int));
    case kShort:
        return static_cast<unsigned short>(va_arg(arguments_, unsigned int));
    case kLong:
        return va_arg(arguments_, unsigned long);
    case kLongLong:
    case kLongDouble:
        return va_arg(arguments_, unsigned long long);
    case kMaximum:
        return va_arg(arguments_, std::uintmax_t);
    case kSize:
        return va_arg(arguments_, std::size_t);
    default:
        return va_arg(arguments_, unsigned int);
    }
}

template <class TUnit> void CFormatter::PutText(const TDirective& directive, const TUnit* text) {
    if (!text) {
        static constexpr wchar kNull[] = VRL_L("(null)");
        PutText(directive, kNull);
        return;
    }
    // A text with a precision need not be terminated.
    std::int64_t count = 0;
    while ((directive.precision < 0 || count < directive.precision) && ReadUnit(text, count) != 0) ++count;
    PutField(directive, text, count);
}

template <class TUnit>
void CFormatter::PutField(const TDirective& directive, const TUnit* text, std::int64_t count) {
    const std::int64_t padding = directive.width - count;
    if (!directive.left) output_.Fill(' ', padding);
    output_.Put(text, count);
    if (directive.left) output_.Fill(' ', padding);
}

/// A number: padding, prefix, zeros, digits.
void CFormatter::PutNumber(const TDirective& directive, const char* prefix, std::int64_t zeros,
                           const char* digits, std::int64_t count) {
    std::int64_t prefixLength = 0;
    while (prefix[prefixLength]) ++prefixLength;
    if (zeros < 0) zeros = 0;
    const std::int64_t padding = directive.width - prefixLength - zeros - count;
    if (!directive.left) output_.Fill(' ', padding);
    output_.Put(prefix, prefixLength);
    output_.Fill('0', zeros);
    output_.Put(digits, count);
    if (directive.left) output_.Fill(' ', padding);
}

const char* SignOf(const TDirective& directive, bool isNegative) {
    if (isNegative) return "-";
    if (directive.plus) return "+";
    return directive.space ? " " : "";
}

void CFormatter::PutSigned(const TDirective& directive) {
    const std::int64_t value = NextSigned(directive.length);
    const std::uint64_t magnitude = static_cast<std::uint64_t>(value);
    PutInteger(directive, SignOf(directive, value < 0), value < 0 ? 0 - magnitude : magnitude);
}

void CFormatter::PutInteger(const TDirective& directive, const char* prefix, std::uint64_t value) {
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
        least = directive.width;
        for (const char* unit = prefix; *unit; ++unit) --least;
        if (least < 1) least = 1;
    }
    if (base == 8 && directive.alternate && least <= count) least = count + 1;
    PutNumber(directive, prefix, least - count, first, count);
}

/// The digits of a finite number that is not negative, as C99 prints them. The narrow `snprintf` of both C
/// runtimes gives the same digits. Returns the full length, which may be beyond the buffer.
template <class TFloat>
std::int64_t PrintFloat(char (&buffer)[kNumberCapacity], const TDirective& directive, TFloat value) {
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

    // The point is the locale's, which may be several bytes: what is no letter, digit or sign.
    const auto isPoint = [](char c) {
        return c && !(c >= '0' && c <= '9') && !((c | 0x20) >= 'a' && (c | 0x20) <= 'z') && c != '+' &&
               c != '-';
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

template <class TFloat> void CFormatter::PutFloat(const TDirective& directive, TFloat value) {
    const bool isUpper = directive.conversion >= 'A' && directive.conversion <= 'Z';
    const char* const sign = SignOf(directive, std::signbit(value));
    if (!std::isfinite(value)) {
        const char* const name = std::isnan(value) ? (isUpper ? "NAN" : "nan") : (isUpper ? "INF" : "inf");
        PutNumber(directive, sign, 0, name, 3);
        return;
    }
    char buffer[kNumberCapacity];
    std::int64_t length = PrintFloat(buffer, directive, std::fabs(value));

    // "0x" is a prefix: zeros stand behind it.
    const bool isHex = directive.conversion == 'a' || directive.conversion == 'A';
    const char* digits = buffer;
    char prefix[4] = {};
    char* at = prefix;
    if (*sign) *at++ = *sign;
    if (isHex && length >= 2) {
        *at++ = *digits++;
        *at = *digits++;
        length -= 2;
    }
    std::int64_t zeros = 0;
    if (directive.zero && !directive.left) {
        zeros = directive.width - length;
        for (const char* unit = prefix; *unit; ++unit) --zeros;
    }
    const std::int64_t stored = kNumberCapacity - 1 - (digits - buffer);
    PutNumber(directive, prefix, zeros, digits, length < stored ? length : stored);
}

} // namespace

int FormatText(wchar* buffer, std::size_t capacity, const wchar* format, std::va_list arguments) {
    if (capacity == 0) return 0;
    COutput output(buffer, capacity);
    if (format) CFormatter(output, arguments).Run(format);
    return output.End();
}

int FormatArguments(wchar* buffer, std::size_t capacity, const wchar* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = FormatText(buffer, capacity, format, arguments);
    va_end(arguments);
    return length;
}

} // namespace vorlund
