// The default bitmap.
#pragma once

#include "vorlund/devices/ResourceHolder.h"

#include <vorlund/Bitmap.h>
#include <vorlund/ClassIds.h>

namespace vorlund {

class CBitmap : public CResourceHolder<IBitmap> {
public:
    static constexpr CId ClassId = classid::CBitmap;

    const TDataFormat_ImageRgb* GetImageFormat() override;
};

} // namespace vorlund
