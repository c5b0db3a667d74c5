#include "PositionedFilter.h"

#include <vorlund/Exception.h>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/support/PositionedFilter");
constexpr TFailure kNegative{VRL_L("CPositionedFilter::Seek"), kFile, 1, VRL_L("Position is negative")};

} // namespace

void CPositionedFilter::Seek(std::int64_t position) {
    if (!IsConnected()) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kNegative);
    position_ = std::min(position, length_);
}
