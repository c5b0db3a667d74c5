/// \file
/// `IAudioClip`, a piece of audio. One thread at a time, except that the data are guarded as those of a resource.
#pragma once

#include <vorlund/Resource.h>

namespace vorlund {

/// A piece of audio: a resource, usable wherever one is. The library's class keeps its data in a resource of
/// its own, made on first use, and hands every operation on to it, except `LockFormat`, which does nothing:
/// the format of a clip stays open. Any operation may raise `CBugException` "Cannot create resource" when the
/// resource class was replaced by one of another kind.
class IAudioClip : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x478EAC60, 0x844E84AE, 0x1DA1DE3F, 0x1DA5759F};

protected:
    ~IAudioClip() = default;
};

} // namespace vorlund
