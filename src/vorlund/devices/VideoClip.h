// The default video clip.
#pragma once

#include "vorlund/devices/ResourceHolder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/VideoClip.h>

namespace vorlund {

class CVideoClip : public CResourceHolder<IVideoClip> {
public:
    static constexpr CId ClassId = classid::CVideoClip;
};

} // namespace vorlund
