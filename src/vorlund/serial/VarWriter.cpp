#include <vorlund/VarWriter.h>

#include "vorlund/api/text/TextKernels.h"

#include <bit>
#include <cstddef>

namespace vorlund {

static_assert(std::endian::native == std::endian::little);

CVarWriter::CVarWriter(IOutputStream* stream) : CWriter(stream) {}

CVarWriter::~CVarWriter() noexcept(false) = default;

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
