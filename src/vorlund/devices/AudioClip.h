// The default audio clip.
#pragma once

#include "vorlund/devices/ResourceHolder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/MediaObjects.h>

namespace vorlund {

class CAudioClip : public CResourceHolder<IAudioClip> {
public:
    static constexpr CId ClassId = classid::CAudioClip;
};

} // namespace vorlund
