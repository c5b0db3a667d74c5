// The default audio clip.
#pragma once

#include "vorlund/devices/ResourceHolder.h"

#include <vorlund/AudioClip.h>
#include <vorlund/ClassIds.h>

namespace vorlund {

class CAudioClip : public CResourceHolder<IAudioClip> {
public:
    static constexpr CId ClassId = classid::CAudioClip;
};

} // namespace vorlund
