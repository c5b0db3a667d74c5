#include <vorlund/Writer.h>

#include <cassert>

namespace vorlund {

CWriter::CWriter(IOutputStream* stream) : stream_(CRefPtr<IOutputStream>::Share(stream)) {
    assert(stream);
}

CWriter::CWriter(const CWriter& other) : CClassObject(other), stream_(other.stream_) {}

CWriter::~CWriter() noexcept(false) = default;

CWriter& CWriter::operator=(const CWriter& other) {
    // The new reference comes first: both may hold the same stream.
    stream_ = other.stream_;
    return *this;
}

void CWriter::Seek(std::uint64_t position) {
    stream_->Seek(static_cast<std::int64_t>(position));
}

std::uint64_t CWriter::Tell() {
    return static_cast<std::uint64_t>(stream_->Tell());
}

} // namespace vorlund
