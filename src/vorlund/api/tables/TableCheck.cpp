// A table is foreign memory: everything that can be seen of it is looked at before anything of it is used,
// and it is read once.
#include "vorlund/api/tables/TableClasses.h"

#include "vorlund/api/text/TextFormat.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vorlund::tables {
namespace {

constexpr std::uint32_t kMaxItems = 64;
/// No later version has a record as large as this.
constexpr std::uint32_t kMaxRecord = 65536;
constexpr std::uint32_t kMaxInstance = 16 << 20;

template <class... TArguments> wstring Format(const wchar* format, TArguments... arguments) {
    wchar text[200];
    FormatArguments(text, static_cast<int>(std::size(text)), format, arguments...);
    return text;
}

/// Copies as much of a record as this version knows; the reason when its size is none.
template <class TRecord> wstring Copy(const TRecord* from, TRecord& to) {
    std::uint32_t size = 0;
    std::memcpy(&size, from, sizeof size);
    if (size < sizeof to || size > kMaxRecord)
        return Format(VRL_L("its size is %u, and not %u"), size, static_cast<unsigned int>(sizeof to));
    std::memcpy(&to, from, sizeof to);
    return {};
}

wstring CheckName(const char* name) {
    if (!name) return VRL_L("its class has no name");
    const std::size_t length = strnlen(name, kMaxText + 1);
    if (length == 0 || length > kMaxText) return VRL_L("the name of its class is empty or too long");
    return {};
}

wstring LackOf(const wchar* function) {
    return Format(VRL_L("it has no function '%s'"), function);
}

wstring CheckRecord(const vorlund_plugin_decoder& record) {
    if (record.instance_size > kMaxInstance)
        return Format(VRL_L("its instances have %u bytes"), record.instance_size);
    if (ToId(record.result_format) == CId::Null()) return VRL_L("it has no result format");
    if (!record.open) return LackOf(VRL_L("open"));
    if (!record.read) return LackOf(VRL_L("read"));
    if (!record.close) return LackOf(VRL_L("close"));
    return {};
}

wstring CheckRecord(const vorlund_plugin_device& record) {
    if (record.kind != VORLUND_PLUGIN_AUDIO_OUTPUT && record.kind != VORLUND_PLUGIN_AUDIO_INPUT)
        return Format(VRL_L("its kind is %u"), record.kind);
    if (!record.open) return LackOf(VRL_L("open"));
    if (!record.start) return LackOf(VRL_L("start"));
    if (!record.stop) return LackOf(VRL_L("stop"));
    if (!record.close) return LackOf(VRL_L("close"));
    return {};
}

/// Looks at one record, which is copied to `copy`, and adds its class.
template <class TRecord>
wstring Add(std::vector<TTableClass>& classes, const TRecord* record, const TRecord* TTableClass::*place,
            TRecord TTableClass::*copy) {
    if (!record) return VRL_L("there is no record");
    TTableClass found;
    TRecord& known = found.*copy;
    wstring refusal = Copy(record, known);
    if (refusal.empty()) refusal = CheckRecord(known);
    if (refusal.empty()) refusal = CheckName(known.class_name);
    if (!refusal.empty()) return refusal;
    found.id = ToId(known.class_id);
    if (found.id == CId::Null()) return VRL_L("its class has no identifier");
    const auto has = [&found](const TTableClass& other) { return other.id == found.id; };
    if (std::any_of(classes.begin(), classes.end(), has))
        return VRL_L("its class has the identifier of another one");
    found.name = ReadText(known.class_name);
    found.*place = record;
    classes.push_back(std::move(found));
    return {};
}

} // namespace

TCheckedTable Check(const vorlund_plugin_table& table) {
    TCheckedTable checked;
    vorlund_plugin_table known{};
    checked.refusal = Copy(&table, known);
    if (!checked.refusal.empty()) return checked;
    if (known.version != VORLUND_PLUGIN_TABLE_VERSION)
        checked.refusal =
            Format(VRL_L("its version is %u, and not %u"), known.version, VORLUND_PLUGIN_TABLE_VERSION);
    else if (known.decoder_count > kMaxItems || known.device_count > kMaxItems)
        checked.refusal = Format(VRL_L("it has %u decoders and %u devices, more than %u"),
                                 known.decoder_count, known.device_count, kMaxItems);
    else if (known.decoder_count > 0 && !known.decoders)
        checked.refusal = VRL_L("it has no list of decoders");
    else if (known.device_count > 0 && !known.devices)
        checked.refusal = VRL_L("it has no list of devices");
    const std::uint32_t decoders = known.decoders ? known.decoder_count : 0;
    const std::uint32_t devices = known.devices ? known.device_count : 0;
    for (std::uint32_t i = 0; checked.refusal.empty() && i < decoders; ++i) {
        const wstring refusal =
            Add(checked.classes, known.decoders[i], &TTableClass::decoderRecord, &TTableClass::decoder);
        if (!refusal.empty()) checked.refusal = Format(VRL_L("decoder %u: %s"), i, refusal.c_str());
    }
    for (std::uint32_t i = 0; checked.refusal.empty() && i < devices; ++i) {
        const wstring refusal =
            Add(checked.classes, known.devices[i], &TTableClass::deviceRecord, &TTableClass::device);
        if (!refusal.empty()) checked.refusal = Format(VRL_L("device %u: %s"), i, refusal.c_str());
    }
    return checked;
}

} // namespace vorlund::tables
