/// \file
/// `CVarReader`, which reads values of the basic types and texts.
#pragma once

#include <vorlund/Reader.h>
#include <vorlund/String.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vorlund {

/// Reads what a `CVarWriter` (VarWriter.h) wrote, type by type in the same order. What the stream raises
/// passes on; the end of the data raises nothing. One thread at a time.
///
/// \code{.cpp}
/// const auto memory = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
/// CVarWriter(memory.Get()) << 1 << CString("three");
/// const auto bytes = CRefPtr<IMemoryInputStream>::Adopt(
///     CreateMemoryInput(memory->GetData(), static_cast<std::uint64_t>(memory->GetLength())));
/// int number = 0;
/// CString text;
/// CVarReader(bytes.Get()) >> number >> text;
/// std::printf("%d %s\n", number, ToUtf8(text).c_str()); // prints 1 three
/// \endcode
class VRL_API CVarReader : public CReader {
public:
    /// Reads from `stream`, which must not be null, with a reference of its own.
    explicit CVarReader(IInputStream* stream);
    ~CVarReader() noexcept(false) override;

    /// One call of the stream's `Read` each, straight into the value. Bytes that do not arrive stay as they
    /// were, so at the end of the data the value stays. Any byte but 0 is true.
    CVarReader& operator>>(bool& value) {
        // Through its byte: the value may not be set yet, and what arrives need not be 0 or 1.
        unsigned char byte;
        std::memcpy(&byte, &value, sizeof(byte));
        Get(byte);
        value = byte != 0;
        return *this;
    }
    CVarReader& operator>>(char& value) { return Get(value); }
    CVarReader& operator>>(unsigned char& value) { return Get(value); }
    CVarReader& operator>>(short& value) { return Get(value); }
    CVarReader& operator>>(unsigned short& value) { return Get(value); }
    CVarReader& operator>>(int& value) { return Get(value); }
    CVarReader& operator>>(unsigned int& value) { return Get(value); }
    CVarReader& operator>>(std::int64_t& value) { return Get(value); }
    CVarReader& operator>>(std::uint64_t& value) { return Get(value); }
    CVarReader& operator>>(float& value) { return Get(value); }
    CVarReader& operator>>(double& value) { return Get(value); }

    /// Reads the count, then the units: up to 65536 units with one call of the stream's `Read`, more of them
    /// piece by piece, so that a wrong count takes no memory for units that never come. The text ends where
    /// the arriving units do, or at the first zero unit.
    ///
    /// A count that does not arrive whole leaves the text as it was. So does a negative count, or one above
    /// 0x3FFFFFFE, which is more than a 32-bit system can hold: they raise `std::bad_alloc` on every system.
    /// When the stream raises, or memory runs out behind the first 65536 units, the text is empty.
    CVarReader& operator>>(CString& text);

    /// `long long` where `std::int64_t` is `long`.
    template <class T>
    requires((std::is_same_v<T, long long> ||
              std::is_same_v<T, unsigned long long>)&&!std::is_same_v<T, std::int64_t> &&
             !std::is_same_v<T, std::uint64_t>) CVarReader&
    operator>>(T& value) {
        std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t> same = value;
        *this >> same;
        value = same;
        return *this;
    }

private:
    template <class T> CVarReader& Get(T& value) {
        // What `Read` returns is ignored: callers rely on a value that stays where the data end.
        stream_->Read(&value, sizeof(value));
        return *this;
    }
};

} // namespace vorlund
