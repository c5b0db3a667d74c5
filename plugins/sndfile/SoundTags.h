// What a sound file says about itself, for applications that use the plug-in "sndfile". Installed with it;
// needs nothing but the headers of the library.
#pragma once

#include <vorlund/StreamFilter.h>

#include <cstdint>

/// What is asked for.
enum TSoundTag : std::uint32_t {
    SOUND_TAG_TITLE = 1,
    SOUND_TAG_COPYRIGHT = 2,
    SOUND_TAG_SOFTWARE = 3,
    SOUND_TAG_ARTIST = 4,
    SOUND_TAG_COMMENT = 5,
    SOUND_TAG_DATE = 6,
    SOUND_TAG_ALBUM = 7,
    SOUND_TAG_LICENSE = 8,
    SOUND_TAG_TRACK_NUMBER = 9,
    SOUND_TAG_GENRE = 16,
};

/// An interface of the decoder "sndfile::CSndfileDecoder", which a query on a decoded stream finds: `GetTag`
/// is its slot behind those of `IInputStreamFilter`. One thread at a time. Since version 0.1.
class ISoundTags : public vorlund::IInputStreamFilter {
public:
    using TBase = vorlund::IInputStreamFilter;
    static constexpr vorlund::CId InterfaceId{0x5A0E7C31, 0xD2964F8B, 0x71C3A6E5, 0x0F8D29B4};

    /// A text of the file, or null when it has none of that kind, for unknown kinds, and while nothing is
    /// connected. It is valid until the next call and while the decoder stays connected. Raises nothing of
    /// its own.
    virtual const vorlund::wchar* GetTag(TSoundTag tag) = 0;

protected:
    ~ISoundTags() = default;
};
