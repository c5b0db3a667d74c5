// What the conversion of buffers and the filter over it share.
#pragma once

#include <vorlund/ChannelMix.h>

namespace vorlund {

/// Whether a matrix has 1 to `kMaxMixChannels` channels on each side, and finite weights.
bool IsGoodMatrix(const TMixMatrix& mix);

} // namespace vorlund
