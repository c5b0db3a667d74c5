#include "Container.h"

#include "MpegFrame.h"

#include "Notes.h"

#include <vorlund/DecodeNotes.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr std::int64_t kLookAhead = 16;
constexpr std::int64_t kId3Head = 10;

/// The beginnings of files: a word, and for some another one at byte 8.
struct TMagic {
    const vorlund::wchar* name;
    std::string_view head;
    std::string_view form;
    TContainer container;
};
constexpr TMagic kMagics[] = {
    {VRL_L("WAV"), "RIFF", "WAVE", TContainer::Plain},
    {VRL_L("WAV (RIFX)"), "RIFX", "WAVE", TContainer::Plain},
    {VRL_L("RF64"), "RF64", "WAVE", TContainer::Plain},
    {VRL_L("AIFF"), "FORM", "AIFF", TContainer::Plain},
    {VRL_L("AIFF-C"), "FORM", "AIFC", TContainer::Plain},
    {VRL_L("AU"), ".snd", "", TContainer::Plain},
    {VRL_L("AU"), "dns.", "", TContainer::Plain},
    {VRL_L("CAF"), "caff", "", TContainer::Plain},
    {VRL_L("FLAC"), "fLaC", "", TContainer::Plain},
    {VRL_L("Ogg"), "OggS", "", TContainer::Ogg},
    {VRL_L("Wave64"), "riff\x2E\x91\xCF\x11", "", TContainer::Plain},
};

struct TStart {
    std::uint8_t bytes[kLookAhead] = {};
    std::int64_t count = 0;

    bool Has(std::size_t at, std::string_view text) const {
        return count >= static_cast<std::int64_t>(at + text.size()) &&
               std::memcmp(bytes + at, text.data(), text.size()) == 0;
    }
};

TStart ReadAt(CVirtualFile& file, std::int64_t position) {
    TStart start;
    file.Seek(position);
    start.count = file.Read(start.bytes, kLookAhead);
    return start;
}

/// Many writers leave a wrong size in the head; libsndfile reads on to the end of what is there.
void NoteWrongSize(const TStart& start, std::int64_t length) {
    if (!start.Has(0, "RIFF")) return;
    std::uint32_t declared = 0;
    std::memcpy(&declared, start.bytes + 4, sizeof declared);
    if (declared + std::int64_t{8} != length)
        Note("the head declares " + std::to_string(declared) + " bytes behind byte 8, there are " +
             std::to_string(length - 8));
}

} // namespace

TContainerAt FindContainer(CVirtualFile& file) {
    TContainerAt found;
    TStart start = ReadAt(file, 0);
    if (start.Has(0, "BW64") && start.Has(8, "WAVE")) {
        file.Exchange(0, 4, {'R', 'F', '6', '4'});
        Note("BW64 is read as RF64");
        start = ReadAt(file, 0);
    }
    while (start.Has(0, "ID3") && start.count >= kId3Head) {
        const std::uint8_t* const size = start.bytes + 6;
        found.start += kId3Head + (std::int64_t{size[0] & 0x7F} << 21 | (size[1] & 0x7F) << 14 |
                                   (size[2] & 0x7F) << 7 | (size[3] & 0x7F));
        start = ReadAt(file, found.start);
    }
    for (const TMagic& magic : kMagics) {
        if (start.Has(0, magic.head) && start.Has(8, magic.form)) {
            found.container = magic.container;
            vorlund::NoteContainer(magic.name);
            NoteWrongSize(start, file.GetLength());
            return found;
        }
    }
    if (!IsMpegAt(file, found.start)) return found;
    found.container = TContainer::Mpeg;
    vorlund::NoteContainer(VRL_L("MP3"));
    return found;
}
