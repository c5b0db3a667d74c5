#include "vorlund/data/base/MediaSample.h"

namespace vorlund {

IMediaSample* CMediaSample::Clone() {
    return static_cast<IMediaSample*>(NewObject<CMediaSample>());
}

} // namespace vorlund
