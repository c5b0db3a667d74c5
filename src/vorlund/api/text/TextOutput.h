/// \file
/// What the formatter's parts share: one directive of a format, and the buffer that is filled.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// How wide an argument is; the letters between precision and conversion.
enum class TFormatLength { None, Char, Short, Long, LongLong, Maximum, Size, Wide, LongDouble };

/// What a format has between a percent sign and the end of its conversion letter.
struct TFormatDirective {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    /// The least number of units printed; not negative.
    int width = 0;
    /// Negative when there is none.
    int precision = -1;
    TFormatLength length = TFormatLength::None;
    wchar conversion = 0;
};

/// Unit `index` of a wide text. A reason that names a path lies in a buffer that another thread's failure may
/// overwrite meanwhile; such a text may be mixed up, but reading it stays defined.
inline wchar ReadUnit(const wchar* text, std::int64_t index) {
    return __atomic_load_n(text + index, __ATOMIC_RELAXED);
}

inline wchar ReadUnit(const char* text, std::int64_t index) {
    return static_cast<wchar>(static_cast<signed char>(text[index]));
}

/// The buffer, with all bounds kept in one place.
class CTextOutput {
public:
    CTextOutput(wchar* buffer, std::size_t capacity) : buffer_(buffer), room_(capacity - 1) {}

    bool IsFull() const { return room_ == 0; }

    /// Not when it is full.
    void Put(wchar unit) {
        *buffer_++ = unit;
        --room_;
        ++written_;
    }

    template <class TUnit> void Put(const TUnit* text, std::int64_t count) {
        if (count <= 0) return;
        const auto room = static_cast<std::int64_t>(room_);
        const std::int64_t put = count < room ? count : room;
        wchar* const start = buffer_;
        for (std::int64_t i = 0; i < put; ++i) start[i] = ReadUnit(text, i);
        buffer_ = start + put;
        room_ -= static_cast<std::size_t>(put);
        written_ += static_cast<int>(put);
    }

    /// A terminated text, or "(null)" for null.
    void PutTerminated(const wchar* text) {
        if (!text) text = VRL_L("(null)");
        std::size_t put = 0;
        for (; put < room_; ++put) {
            const wchar unit = ReadUnit(text, static_cast<std::int64_t>(put));
            if (unit == 0) break;
            buffer_[put] = unit;
        }
        buffer_ += put;
        room_ -= put;
        written_ += static_cast<int>(put);
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

} // namespace vorlund
