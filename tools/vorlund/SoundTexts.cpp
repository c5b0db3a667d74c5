#include "SoundTexts.h"

#include "../../plugins/sndfile/SoundTags.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace vorlund;

namespace {

/// A name, the tag of the decoder, the identifier in an INFO list, and the name that encoders know.
struct TName {
    std::string_view name;
    TSoundTag tag;
    std::string_view info;
    const wchar* encoder;
};
constexpr TName kNames[] = {
    {"title", SOUND_TAG_TITLE, "INAM", VRL_L("title")},
    {"artist", SOUND_TAG_ARTIST, "IART", VRL_L("artist")},
    {"album", SOUND_TAG_ALBUM, "IPRD", VRL_L("album")},
    {"track", SOUND_TAG_TRACK_NUMBER, "ITRK", VRL_L("track number")},
    {"date", SOUND_TAG_DATE, "ICRD", VRL_L("date")},
    {"genre", SOUND_TAG_GENRE, "IGNR", VRL_L("genre")},
    {"comment", SOUND_TAG_COMMENT, "ICMT", VRL_L("comment")},
    {"copyright", SOUND_TAG_COPYRIGHT, "ICOP", VRL_L("copyright")},
    {"licence", SOUND_TAG_LICENSE, "", VRL_L("license")},
    {"software", SOUND_TAG_SOFTWARE, "ISFT", nullptr},
};

template <class TIs> const TName* Find(TIs is) {
    const auto* const found = std::find_if(std::begin(kNames), std::end(kNames), is);
    return found == std::end(kNames) ? nullptr : found;
}

constexpr std::size_t kInfoId = 4;

} // namespace

std::vector<TSoundText> GetSoundTexts(IInputStream& decoded) {
    std::vector<TSoundText> texts;
    const auto tags = CRefPtr<IInputStream>::Share(&decoded).Query<ISoundTags>();
    if (!tags) return texts;
    for (const TName& row : kNames) {
        const wchar* const text = tags->GetTag(row.tag);
        if (text && *text) texts.push_back({std::string(row.name), text});
    }
    return texts;
}

std::vector<TSoundText> GetWavTexts(const TWavMetadata& metadata) {
    std::vector<TSoundText> texts;
    const auto add = [&texts](std::string_view name, const std::string& text) {
        if (!text.empty()) texts.push_back({std::string(name), PathFromUtf8(text.c_str())});
    };
    for (const TWavInfoEntry& entry : metadata.info) {
        const TName* const known = Find([&entry](const TName& row) { return row.info == entry.id; });
        add(known ? known->name : entry.id, entry.text);
    }
    if (const auto& broadcast = metadata.broadcast) {
        add("description", broadcast->description);
        add("originator", broadcast->originator);
        add("reference", broadcast->originatorReference);
        add("origination date", broadcast->originationDate);
        add("origination time", broadcast->originationTime);
        add("history", broadcast->codingHistory);
    }
    return texts;
}

std::vector<TWavInfoEntry> MakeInfoEntries(const std::vector<TSoundText>& texts) {
    std::vector<TWavInfoEntry> entries;
    for (const TSoundText& text : texts) {
        const TName* const known = Find([&text](const TName& row) { return row.name == text.name; });
        const std::string id(known ? known->info : text.name.size() == kInfoId ? text.name : "");
        if (!id.empty()) entries.push_back({id, PathToUtf8(text.text.c_str())});
    }
    return entries;
}

void SetEncoderTexts(IAudioEncoder& encoder, const std::vector<TSoundText>& texts) {
    for (const TSoundText& text : texts) {
        const TName* const known = Find([&text](const TName& row) { return row.name == text.name; });
        if (!known || !known->encoder) continue;
        try {
            encoder.SetTag(known->encoder, text.text.c_str());
        } catch (const CInvalidParameterException&) {
            // Its kind of file has no such tag.
        }
    }
}
