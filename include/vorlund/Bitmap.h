/// \file
/// `IBitmap`, a picture. Device plug-ins may register a better class than the library's plain one. One thread
/// at a time, except that the data are guarded as those of a resource.
#pragma once

#include <vorlund/Resource.h>

namespace vorlund {

struct TDataFormat_ImageRgb;

/// A picture: a resource, usable wherever a resource is. The library's class works as that of `IAudioClip`
/// (AudioClip.h).
class IBitmap : public IResource {
public:
    using TBase = IResource;
    static constexpr CId InterfaceId{0x43536106, 0xF5130314, 0xA3A60A45, 0x1B4DFE2C};

    /// The size and the pixels of the picture: the resource's format record, valid until the format changes,
    /// or null when it is not an RGB image.
    virtual const TDataFormat_ImageRgb* GetImageFormat() = 0;

protected:
    ~IBitmap() = default;
};

} // namespace vorlund
