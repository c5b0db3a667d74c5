// The version that the library was built as: the one of its own headers.
#include <vorlund/Version.h>

namespace vorlund {
namespace {

constexpr TVersion kVersion{VORLUND_VERSION_MAJOR, VORLUND_VERSION_MINOR, VORLUND_VERSION_PATCH,
                            VORLUND_VERSION, VORLUND_VERSION_STRING};

} // namespace

const TVersion& GetVersion() noexcept {
    return kVersion;
}

} // namespace vorlund
