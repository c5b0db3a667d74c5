/// \file
/// `IAudioClip`, a piece of audio. Device plug-ins may register a better class than the library's plain one.
/// One thread at a time, except that the data are guarded as those of a resource.
#pragma once

#include <vorlund/Resource.h>

namespace vorlund {

/// A piece of audio: a resource, usable wherever a resource is. The library's class keeps its data in a
/// resource of its own, which it creates on first use, and forwards every operation to it, except
/// `LockFormat`, which does nothing: the format of a clip can always change. Any operation may raise
/// `CBugException` "Cannot create resource" when the resource class was replaced by one of another kind.
class IAudioClip : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x478EAC60, 0x844E84AE, 0x1DA1DE3F, 0x1DA5759F};

protected:
    ~IAudioClip() = default;
};

} // namespace vorlund
