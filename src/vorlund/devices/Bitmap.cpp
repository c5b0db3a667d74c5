#include "vorlund/devices/Bitmap.h"

#include <vorlund/DataFormat.h>

namespace vorlund {

const TDataFormat_ImageRgb* CBitmap::GetImageFormat() {
    const TDataFormat* const format = GetFormat();
    // A record that is too short for its identifier is no image.
    const bool isImage =
        format->id == TDataFormat_ImageRgb::FormatId && format->size >= sizeof(TDataFormat_ImageRgb);
    return isImage ? static_cast<const TDataFormat_ImageRgb*>(format) : nullptr;
}

} // namespace vorlund
