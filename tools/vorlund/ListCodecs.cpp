// The command "codecs".
#include "JsonWriter.h"
#include "Listings.h"
#include "PluginTexts.h"
#include "Table.h"

#include <vorlund/AudioEncoder.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <algorithm>

using namespace vorlund;

namespace {

/// A decoder or an encoder.
struct TCodec {
    wstring name;
    CId classId;
    CId from;
    CId to;
    const TPluginReport* bringer;
};

wstring DescribeFormat(const CId& id) {
    if (id == CId::Null()) return VRL_L("bytes");
    if (id == TDataFormat_AudioPcm::FormatId) return VRL_L("audio PCM");
    if (id == TDataFormat_ImageRgb::FormatId) return VRL_L("image RGB");
    if (id == TDataFormat_VideoRgb::FormatId) return VRL_L("video RGB");
    if (id == SOUND_FILE_AIFF) return VRL_L("AIFF");
    if (id == SOUND_FILE_FLAC) return VRL_L("FLAC");
    if (id == SOUND_FILE_MP3) return VRL_L("MP3");
    if (id == SOUND_FILE_OGG_OPUS) return VRL_L("Ogg Opus");
    if (id == SOUND_FILE_OGG_VORBIS) return VRL_L("Ogg Vorbis");
    return id.ToString();
}

/// The class is registered, as the stores ask for that.
wstring GetClassName(const CId& classId) {
    const wchar* const name = v.GetClassStore().GetClassInfo(classId)->name;
    return name ? wstring(name) : classId.ToString();
}

template <class TInfo>
std::vector<TCodec> GetCodecs(IObjectEnumerator* records, const std::vector<TPluginReport>& reports,
                              TPluginItemKind kind) {
    std::vector<TCodec> codecs;
    const auto owner = CRefPtr<IObjectEnumerator>::Adopt(records);
    while (owner->HasNext()) {
        const auto item = CRefPtr<IObject>::Adopt(owner->GetNext()).Query<IPtrObject>();
        const auto& info = *static_cast<const TInfo*>(item->GetPtr());
        codecs.push_back({GetClassName(info.classId), info.classId, info.inputFormatId, info.outputFormatId,
                          FindBringer(reports, kind, info.classId)});
    }
    return codecs;
}

/// Who reads a kind of file, and if nobody does, why not.
struct TReader {
    /// For scripts: "read", "partly", "missing" or "unknown".
    const char* state;
    wstring text;
};

TReader FindReader(const TKnownContainer& container, const std::vector<TCodec>& decoders,
                   const std::vector<TPluginReport>& reports) {
    const wstring plugin = container.plugin.GetBuffer();
    const bool isThere = std::any_of(decoders.begin(), decoders.end(), [&](const TCodec& decoder) {
        return decoder.name == container.decoder.GetBuffer();
    });
    if (isThere) return {"read", VRL_L("plug-in '") + plugin + VRL_L("'")};
    if (plugin.empty()) return {"unknown", VRL_L("nobody")};
    // The library's own decoder.
    const bool isPartly = container.name == VRL_L("WAV");
    wstring text = isPartly ? VRL_L("the library, PCM of 8 and 16 bits; for the others ") : VRL_L("");
    const TPluginReport* const report = FindPlugin(reports, plugin);
    text += report && report->outcome != PLUGIN_LOADED
                ? VRL_L("plug-in '") + plugin + VRL_L("', not loaded: ") + report->Explain().GetBuffer()
                : VRL_L("install the plug-in '") + plugin + VRL_L("'");
    return {isPartly ? "partly" : "missing", text};
}

void WriteCodecs(CJsonWriter& json, const char* key, const std::vector<TCodec>& codecs) {
    json.Key(key).BeginArray();
    for (const TCodec& codec : codecs) {
        json.BeginObject().Key("class").Text(codec.name.c_str());
        json.Key("id").Text(codec.classId.ToString().c_str());
        json.Key("from").Text(DescribeFormat(codec.from).c_str());
        json.Key("to").Text(DescribeFormat(codec.to).c_str()).Key("plugin");
        codec.bringer ? json.Text(codec.bringer->path) : json.Null();
        json.EndObject();
    }
    json.EndArray();
}

void PrintCodecs(const char* head, const std::vector<TCodec>& codecs) {
    const std::string text = head;
    const wstring wide(text.begin(), text.end());
    if (codecs.empty()) return PrintLine(wide + VRL_L(": none is registered"));
    std::vector<TRow> rows{{wide, VRL_L("From"), VRL_L("To"), VRL_L("Brought by")}};
    for (const TCodec& codec : codecs)
        rows.push_back({codec.name, DescribeFormat(codec.from), DescribeFormat(codec.to),
                        DescribeBringer(codec.bringer)});
    PrintTable(rows);
}

} // namespace

void RunCodecs(const TListOptions& options) {
    const std::vector<TPluginReport> reports = GetFileReports();
    const CCodecClassStore& store = v.GetCodecClassStore();
    const auto decoders =
        GetCodecs<TDecoderClassInfo>(store.EnumerateDecoders(), reports, PLUGIN_ITEM_DECODER);
    const auto encoders =
        GetCodecs<TEncoderClassInfo>(store.EnumerateEncoders(), reports, PLUGIN_ITEM_ENCODER);
    CJsonWriter json;
    json.BeginObject();
    WriteCodecs(json, "decoders", decoders);
    WriteCodecs(json, "encoders", encoders);
    json.Key("containers").BeginArray();
    std::vector<TRow> kinds{{VRL_L("Kind of file"), VRL_L("Read by")}};
    for (const TKnownContainer& container : ListKnownContainers()) {
        const TReader reader = FindReader(container, decoders, reports);
        kinds.push_back({container.name.GetBuffer(), reader.text});
        json.BeginObject().Key("name").Text(container.name).Key("state").Text(reader.state);
        json.Key("plugin");
        container.plugin.Length() > 0 ? json.Text(container.plugin) : json.Null();
        json.Key("text").Text(reader.text.c_str()).EndObject();
    }
    json.EndArray().EndObject();
    if (options.isJson) return PrintJson(json);
    PrintCodecs("Decoder", decoders);
    PrintLine({});
    PrintCodecs("Encoder", encoders);
    PrintLine({});
    PrintTable(kinds);
}
