// Decoders whose work functions of the host do.
#pragma once

namespace vorlund::capi {

/// Makes room for those of the next session. While the library is closed.
void ForgetOwnDecoders() noexcept;

} // namespace vorlund::capi
