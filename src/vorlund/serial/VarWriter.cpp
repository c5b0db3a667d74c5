#include <vorlund/VarWriter.h>

#include "vorlund/api/TextKernels.h"

#include <bit>
#include <cstddef>

namespace vorlund {

// Values are written as they stand in memory, so that one call of the stream is all that it takes.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(short) == 2 && sizeof(int) == 4 && sizeof(float) == 4 && sizeof(double) == 8);

CVarWriter::CVarWriter(IOutputStream* stream) : CWriter(stream) {}

CVarWriter::~CVarWriter() noexcept(false) = default;

template <class T> CVarWriter& CVarWriter::Put(const T& value) {
    stream_->Write(&value, sizeof(value));
    return *this;
}

CVarWriter& CVarWriter::operator<<(bool value) {
    return Put(static_cast<unsigned char>(value ? 1 : 0));
}
CVarWriter& CVarWriter::operator<<(char value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(unsigned char value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(short value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(unsigned short value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(int value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(unsigned int value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(std::int64_t value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(std::uint64_t value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(float value) {
    return Put(value);
}
CVarWriter& CVarWriter::operator<<(double value) {
    return Put(value);
}

CVarWriter& CVarWriter::operator<<(const wchar* text) {
    const std::size_t length = text ? TextLength(text) : 0;
    Put(static_cast<std::uint32_t>(length));
    stream_->Write(text ? text : VRL_L(""), std::uint64_t{length} * sizeof(wchar));
    return *this;
}

CVarWriter& CVarWriter::operator<<(const CString& text) {
    return *this << text.GetBuffer();
}

} // namespace vorlund
