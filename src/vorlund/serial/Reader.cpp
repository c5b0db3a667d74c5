#include <vorlund/Reader.h>

#include <cassert>

namespace vorlund {

CReader::CReader(IInputStream* stream) : stream_(CRefPtr<IInputStream>::Share(stream)) {
    assert(stream);
}

CReader::~CReader() noexcept(false) = default;

bool CReader::Eof() {
    return stream_->Eof();
}

void CReader::Seek(std::uint64_t position) {
    stream_->Seek(static_cast<std::int64_t>(position));
}

std::uint64_t CReader::Tell() {
    return static_cast<std::uint64_t>(stream_->Tell());
}

} // namespace vorlund
