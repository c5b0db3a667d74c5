#include <vorlund/BufferedReader.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace vorlund {

CBufferedReader::CBufferedReader(IInputStream* stream, int size)
    : CReader(stream), buffer_(nullptr), capacity_(size) {
    if (size == 0) return;
    if (size > 0) buffer_ = static_cast<std::uint8_t*>(std::malloc(static_cast<std::size_t>(size)));
    if (!buffer_) throw std::bad_alloc();
}

CBufferedReader::~CBufferedReader() noexcept(false) {
    std::free(buffer_);
}

bool CBufferedReader::Eof() {
    return buffered_ == 0 && CReader::Eof();
}

void CBufferedReader::Seek(std::uint64_t position) {
    Flush();
    CReader::Seek(position);
}

std::uint64_t CBufferedReader::Tell() {
    return CReader::Tell() - static_cast<std::uint64_t>(buffered_);
}

void CBufferedReader::FillBuffer() {
    const std::int32_t room = capacity_ - buffered_;
    if (room <= 0) return;
    const auto wanted = static_cast<std::uint64_t>(room);
    // A stream that claims more than it was asked for has filled the room at most.
    buffered_ += static_cast<std::int32_t>(std::min(stream_->Read(buffer_ + buffered_, wanted), wanted));
}

void CBufferedReader::RemoveBufferedData(int count) {
    if (count <= 0) return;
    if (count >= buffered_) {
        buffered_ = 0;
        return;
    }
    buffered_ -= count;
    std::memmove(buffer_, buffer_ + count, static_cast<std::size_t>(buffered_));
}

void CBufferedReader::Flush() {
    buffered_ = 0;
}

} // namespace vorlund
