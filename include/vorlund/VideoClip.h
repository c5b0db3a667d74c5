/// \file
/// `IVideoClip`, a piece of video. Device plug-ins may register a better class than the library's plain one.
/// One thread at a time, except that the data are guarded as those of a resource.
#pragma once

#include <vorlund/Resource.h>

namespace vorlund {

/// A piece of video: a resource, usable wherever a resource is. The library's class works as that of
/// `IAudioClip` (AudioClip.h).
class IVideoClip : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x7C5FD705, 0x3DD86D87, 0x870814AF, 0xE9EC320D};

protected:
    ~IVideoClip() = default;
};

} // namespace vorlund
