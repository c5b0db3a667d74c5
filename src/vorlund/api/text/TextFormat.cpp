#include "vorlund/api/text/TextFormat.h"

#include "vorlund/api/text/TextNumbers.h"

#include <limits>

namespace vorlund {
namespace {

class CFormatter {
public:
    CFormatter(CTextOutput& output, std::va_list arguments) : output_(output) {
        va_copy(arguments_, arguments);
    }
    CFormatter(const CFormatter&) = delete;
    CFormatter& operator=(const CFormatter&) = delete;
    ~CFormatter() { va_end(arguments_); }

    void Run(const wchar* format) {
        while (*format && !output_.IsFull()) {
            if (*format != '%') {
                const wchar* const text = format;
                while (*format && *format != '%') ++format;
                output_.Put(text, format - text);
                continue;
            }
            TFormatDirective directive;
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
    const wchar* Parse(const wchar* format, TFormatDirective& directive);
    const wchar* ParseFlags(const wchar* format, TFormatDirective& directive);
    const wchar* ParseNumber(const wchar* format, int& number);
    const wchar* ParseLength(const wchar* format, TFormatLength& length);
    bool Convert(const TFormatDirective& directive);

    std::int64_t NextSigned(TFormatLength length);
    std::uint64_t NextUnsigned(TFormatLength length);

    template <class TUnit> void PutText(const TFormatDirective& directive, const TUnit* text);
    template <class TUnit>
    void PutField(const TFormatDirective& directive, const TUnit* text, std::int64_t count);

    CTextOutput& output_;
    std::va_list arguments_;
};

const wchar* CFormatter::Parse(const wchar* format, TFormatDirective& directive) {
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

const wchar* CFormatter::ParseFlags(const wchar* format, TFormatDirective& directive) {
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
    constexpr std::int64_t kMaxNumber = std::numeric_limits<int>::max();
    for (; *format >= '0' && *format <= '9'; ++format) {
        value = value * 10 + (*format - '0');
        if (value > kMaxNumber) value = kMaxNumber;
    }
    number = static_cast<int>(value);
    return format;
}

const wchar* CFormatter::ParseLength(const wchar* format, TFormatLength& length) {
    const auto take = [&](TFormatLength found, int count) {
        length = found;
        return format + count;
    };
    switch (*format) {
    case 'h':
        return format[1] == 'h' ? take(TFormatLength::Char, 2) : take(TFormatLength::Short, 1);
    case 'l':
        return format[1] == 'l' ? take(TFormatLength::LongLong, 2) : take(TFormatLength::Long, 1);
    case 'I':
        if (format[1] == '6' && format[2] == '4') return take(TFormatLength::LongLong, 3);
        if (format[1] == '3' && format[2] == '2') return take(TFormatLength::None, 3);
        return take(TFormatLength::Size, 1);
    case 'w':
        return take(TFormatLength::Wide, 1);
    case 'z':
    case 't':
        return take(TFormatLength::Size, 1);
    case 'j':
        return take(TFormatLength::Maximum, 1);
    case 'L':
        return take(TFormatLength::LongDouble, 1);
    default:
        return format;
    }
}

/// Returns false for an unknown conversion.
bool CFormatter::Convert(const TFormatDirective& directive) {
    const bool isShort = directive.length == TFormatLength::Short || directive.length == TFormatLength::Char;
    const bool isLong = directive.length == TFormatLength::Long ||
                        directive.length == TFormatLength::LongLong ||
                        directive.length == TFormatLength::Wide;
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
        PutSigned(output_, directive, NextSigned(directive.length));
        return true;
    case 'u':
    case 'o':
        PutUnsigned(output_, directive, "", NextUnsigned(directive.length));
        return true;
    case 'x':
    case 'X': {
        const std::uint64_t value = NextUnsigned(directive.length);
        const char* const prefix = directive.conversion == 'x' ? "0x" : "0X";
        PutUnsigned(output_, directive, directive.alternate && value != 0 ? prefix : "", value);
        return true;
    }
    case 'p': {
        TFormatDirective address = directive;
        address.conversion = 'X';
        address.precision = 2 * sizeof(void*);
        PutUnsigned(output_, address, "", reinterpret_cast<std::uintptr_t>(va_arg(arguments_, void*)));
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
        if (directive.length == TFormatLength::LongDouble) {
            PutFloat(output_, directive, va_arg(arguments_, long double));
        } else {
            PutFloat(output_, directive, va_arg(arguments_, double));
        }
        return true;
    default:
        return false;
    }
}

std::int64_t CFormatter::NextSigned(TFormatLength length) {
    switch (length) {
    case TFormatLength::Char:
        return static_cast<signed char>(va_arg(arguments_, int));
    case TFormatLength::Short:
        return static_cast<short>(va_arg(arguments_, int));
    case TFormatLength::Long:
        return va_arg(arguments_, long);
    case TFormatLength::LongLong:
    case TFormatLength::LongDouble:
        return va_arg(arguments_, long long);
    case TFormatLength::Maximum:
        return va_arg(arguments_, std::intmax_t);
    case TFormatLength::Size:
        return va_arg(arguments_, std::ptrdiff_t);
    default:
        return va_arg(arguments_, int);
    }
}

std::uint64_t CFormatter::NextUnsigned(TFormatLength length) {
    switch (length) {
    case TFormatLength::Char:
        return static_cast<unsigned char>(va_arg(arguments_, unsigned int));
    case TFormatLength::Short:
        return static_cast<unsigned short>(va_arg(arguments_, unsigned int));
    case TFormatLength::Long:
        return va_arg(arguments_, unsigned long);
    case TFormatLength::LongLong:
    case TFormatLength::LongDouble:
        return va_arg(arguments_, unsigned long long);
    case TFormatLength::Maximum:
        return va_arg(arguments_, std::uintmax_t);
    case TFormatLength::Size:
        return va_arg(arguments_, std::size_t);
    default:
        return va_arg(arguments_, unsigned int);
    }
}

template <class TUnit> void CFormatter::PutText(const TFormatDirective& directive, const TUnit* text) {
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
void CFormatter::PutField(const TFormatDirective& directive, const TUnit* text, std::int64_t count) {
    const std::int64_t padding = directive.width - count;
    if (!directive.left) output_.Fill(' ', padding);
    output_.Put(text, count);
    if (directive.left) output_.Fill(' ', padding);
}

} // namespace

int FormatText(wchar* buffer, std::size_t capacity, const wchar* format, std::va_list arguments) {
    if (capacity == 0) return 0;
    CTextOutput output(buffer, capacity);
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
