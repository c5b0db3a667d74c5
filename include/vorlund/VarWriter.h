/// \file
/// `CVarWriter`, which writes values of the basic types and texts.
#pragma once

#include <vorlund/String.h>
#include <vorlund/Writer.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace vorlund {

/// Not for applications and plug-ins: what `CVarWriter` below needs to choose between types.
namespace serial {

/// True when `T` is one of the types.
template <class T, class... TTypes> inline constexpr bool kIsOneOf = (std::is_same_v<T, TTypes> || ...);

/// The 64-bit integers of systems that have two types of them: `long long` where `std::int64_t` is `long`.
template <class T>
concept TOtherInt64 = kIsOneOf<T, long long, unsigned long long> && !kIsOneOf<T, std::int64_t, std::uint64_t>;

/// Numbers, enumerations and pointers that the format has no value for. Without this they would convert to a
/// type of another size, or to `bool`.
template <class T>
concept TForeignScalar =
    std::is_scalar_v<std::decay_t<T>> && !TOtherInt64<std::decay_t<T>> &&
    !kIsOneOf<std::decay_t<T>, bool, char, unsigned char, short, unsigned short, int, unsigned int,
              std::int64_t, std::uint64_t, float, double, wchar*, const wchar*>;

} // namespace serial

// Values are written and read as they are in memory.
static_assert(sizeof(bool) == 1 && sizeof(short) == 2 && sizeof(int) == 4 && sizeof(float) == 4 &&
              sizeof(double) == 8);

/// Writes the bare image of each value: no tag, no name, no padding, low byte first. What is written is read
/// back by a `CVarReader` that reads the same types in the same order; nothing checks it.
///
/// | Type | Bytes |
/// |---|---|
/// | `bool` | 1: the byte 1 or 0 |
/// | `char`, `unsigned char` | 1 |
/// | `short`, `unsigned short` | 2 |
/// | `int`, `unsigned int`, `float` | 4 |
/// | 64-bit integers, `double` | 8 |
/// | texts | 4 + 2n: the number n of units as a 32-bit count, then the units |
///
/// Other types do not compile: a cast says how many bytes are meant. What the stream raises passes on. Copies
/// share the stream. One thread at a time.
///
/// \code{.cpp}
/// const auto memory = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
/// CVarWriter(memory.Get()) << 1 << 2.5 << true << CString("three");
/// std::printf("%d bytes\n", static_cast<int>(memory->GetLength())); // prints 27 bytes
/// \endcode
class VRL_API CVarWriter : public CWriter {
public:
    /// Writes to `stream`, which must not be null, with a reference of its own.
    explicit CVarWriter(IOutputStream* stream);
    CVarWriter(const CVarWriter&) = default;
    CVarWriter& operator=(const CVarWriter&) = default;
    using CWriter::operator=;
    ~CVarWriter() noexcept(false) override;

    /// One call of the stream's `Write` each.
    CVarWriter& operator<<(bool value) { return Put(static_cast<unsigned char>(value ? 1 : 0)); }
    CVarWriter& operator<<(char value) { return Put(value); }
    CVarWriter& operator<<(unsigned char value) { return Put(value); }
    CVarWriter& operator<<(short value) { return Put(value); }
    CVarWriter& operator<<(unsigned short value) { return Put(value); }
    CVarWriter& operator<<(int value) { return Put(value); }
    CVarWriter& operator<<(unsigned int value) { return Put(value); }
    CVarWriter& operator<<(std::int64_t value) { return Put(value); }
    CVarWriter& operator<<(std::uint64_t value) { return Put(value); }
    CVarWriter& operator<<(float value) { return Put(value); }
    CVarWriter& operator<<(double value) { return Put(value); }

    /// Two calls of the stream's `Write`: the count and the units, without the terminator. A null text counts
    /// as empty.
    CVarWriter& operator<<(const wchar* text);
    CVarWriter& operator<<(const CString& text);

    template <serial::TOtherInt64 T> CVarWriter& operator<<(T value) {
        using TInt64 = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
        return *this << static_cast<TInt64>(value);
    }
    template <serial::TForeignScalar T> CVarWriter& operator<<(const T& value) = delete;

private:
    template <class T> CVarWriter& Put(const T& value) {
        stream_->Write(&value, sizeof(value));
        return *this;
    }
};

} // namespace vorlund
