// Decoding, its reports, and the chains that come of it.

#include "vorlund_c/decode.h"

#include "Calls.h"
#include "Files.h"
#include "Records.h"
#include "StreamObject.h"
#include "Texts.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/Vorlund.h>

#include <span>

namespace vorlund::capi {

namespace {

class CReportObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Report;

    CReportObject() : CHandleObject(Kind) { chain_ = std::make_shared<CChain>(); }

    CDecodeReport& Get() { return report_; }
    const TDecodeEntry& At(std::uint32_t index) const {
        Require(index < report_.GetEntries().size(), "There is no such entry");
        return report_.GetEntries()[index];
    }

private:
    CDecodeReport report_;
};

CId WantedOf(const std::uint32_t* wanted) {
    return wanted ? TakeId(wanted) : TDataFormat_AudioPcm::FormatId;
}

/// The options of a caller as the library has them.
class CChoice {
public:
    explicit CChoice(const vorlund_decode_options* options) {
        if (!options) return;
        const auto taken = TakeRecord(options, sizeof(vorlund_decode_options));
        forbidden_ = TakeIds(taken.forbidden, taken.forbidden_count);
        preferred_ = TakeIds(taken.preferred, taken.preferred_count);
    }
    TDecoderChoice Get(CDecodeReport* report) const {
        return {.report = report, .forbidden = forbidden_, .preferred = preferred_};
    }

private:
    static std::vector<CId> TakeIds(const std::uint32_t* words, std::uint32_t count) {
        Require(words || count == 0, "A list of classes is null");
        std::vector<CId> ids;
        for (std::uint32_t i = 0; i < count; ++i) ids.push_back(TakeId(words + std::size_t{4} * i));
        return ids;
    }

    std::vector<CId> forbidden_;
    std::vector<CId> preferred_;
};

/// Calls `decode` with a choice and keeps what it reports, also when it raises.
template <class TDecode>
void WithReport(const vorlund_decode_options* options, vorlund_report* report, TDecode&& decode) {
    const CChoice choice(options);
    if (!report) return decode(choice.Get(nullptr));
    *report = nullptr;
    const auto object = std::make_shared<CReportObject>();
    *report = static_cast<vorlund_report>(NewHandle(object));
    const CUse<CReportObject> use(object);
    decode(choice.Get(&use->Get()));
}

template <class TUnit>
std::int32_t DecodeFile(const char* function, const TUnit* path, const std::uint32_t* wanted,
                        const vorlund_decode_options* options, vorlund_report* report,
                        vorlund_stream* stream) noexcept {
    return Guarded(function, [&] {
        RequirePointer(stream);
        const CId format = WantedOf(wanted);
        if (report) *report = nullptr;
        const auto file = OpenInputFile(TakePath(path));
        WithReport(options, report, [&](const TDecoderChoice& choice) {
            auto decoded =
                CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeStream(file.Get(), format, choice));
            MakeHandle<CStreamObject>(stream, std::move(decoded));
        });
    });
}

const CString& FieldOf(const TDecodeEntry& entry, std::int32_t field) {
    switch (field) {
    case VORLUND_ENTRY_CLASS:
        return entry.className;
    case VORLUND_ENTRY_METHOD:
        return entry.method;
    case VORLUND_ENTRY_REASON:
        return entry.reason;
    case VORLUND_ENTRY_CONTAINER:
        return entry.container;
    case VORLUND_ENTRY_VALUES:
        return entry.values;
    case VORLUND_ENTRY_REMARKS:
        return entry.remarks;
    default:
        throw CFailure(VORLUND_ERROR_ARGUMENT, "There is no such text");
    }
}

CString FieldOf(const CDecodeReport& report, std::int32_t field) {
    switch (field) {
    case VORLUND_REPORT_EXPLANATION:
        return report.Explain();
    case VORLUND_REPORT_CONTAINER:
        return report.GetContainer();
    case VORLUND_REPORT_PLUGIN:
        return report.GetPlugin();
    case VORLUND_REPORT_WHOLE:
        return report.ToString();
    default:
        throw CFailure(VORLUND_ERROR_ARGUMENT, "There is no such text");
    }
}

template <class TUnit>
std::int32_t GiveEntryText(const char* function, vorlund_report report, std::uint32_t index,
                           std::int32_t field, TUnit* text, std::uint32_t room,
                           std::uint32_t* length) noexcept {
    return Guarded(function, [&] {
        const CUse<CReportObject> object(report);
        GiveText(FieldOf(object->At(index), field), text, room, length);
    });
}

template <class TUnit>
std::int32_t GiveReportText(const char* function, vorlund_report report, std::int32_t field, TUnit* text,
                            std::uint32_t room, std::uint32_t* length) noexcept {
    return Guarded(function, [&] {
        const CUse<CReportObject> object(report);
        GiveText(FieldOf(object->Get(), field), text, room, length);
    });
}

TChainLink LinkOf(IInputStream& stream, std::uint32_t index) {
    const std::vector<TChainLink> chain = ListChain(stream);
    Require(index < chain.size(), "There is no such stream");
    return chain[index];
}

template <class TUnit>
std::int32_t GiveChainName(const char* function, vorlund_stream stream, std::uint32_t index, TUnit* text,
                           std::uint32_t room, std::uint32_t* length) noexcept {
    return Guarded(function, [&] {
        const CUse<CStreamObject> object(stream);
        GiveText(LinkOf(object->Get(), index).className, text, room, length);
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::CRefPtr;
using vorlund::IInputStream;

int32_t VORLUND_CALL vorlund_decode_file(const char* path, const uint32_t* wanted,
                                         const vorlund_decode_options* options, vorlund_report* report,
                                         vorlund_stream* stream) {
    return DecodeFile(__func__, path, wanted, options, report, stream);
}

int32_t VORLUND_CALL vorlund_decode_file16(const uint16_t* path, const uint32_t* wanted,
                                           const vorlund_decode_options* options, vorlund_report* report,
                                           vorlund_stream* stream) {
    return DecodeFile(__func__, path, wanted, options, report, stream);
}

int32_t VORLUND_CALL vorlund_decode_stream(vorlund_stream source, const uint32_t* wanted,
                                           const vorlund_decode_options* options, vorlund_report* report,
                                           vorlund_stream* stream) {
    return Guarded(__func__, [&] {
        RequirePointer(stream);
        const CUse<CStreamObject> object(source);
        WithReport(options, report, [&](const vorlund::TDecoderChoice& choice) {
            auto decoded = CRefPtr<IInputStream>::Adopt(
                vorlund::v.GetCodecClassStore().DecodeStream(&object->Get(), WantedOf(wanted), choice));
            MakeHandle<CStreamObject>(stream, std::move(decoded), object.Share());
        });
    });
}

int32_t VORLUND_CALL vorlund_report_count(vorlund_report report, uint32_t* count) {
    return Guarded(__func__, [&] {
        RequirePointer(count);
        const CUse<CReportObject> object(report);
        *count = static_cast<uint32_t>(object->Get().GetEntries().size());
    });
}

int32_t VORLUND_CALL vorlund_report_get_entry(vorlund_report report, uint32_t index,
                                              vorlund_report_entry* entry) {
    return Guarded(__func__, [&] {
        const CUse<CReportObject> object(report);
        const vorlund::TDecodeEntry& found = object->At(index);
        vorlund_report_entry full{};
        full.outcome = found.outcome;
        full.depth = found.depth;
        full.exception_type = found.exceptionType;
        GiveId(found.classId, full.class_id);
        full.bytes_read = found.bytesRead;
        full.seconds = found.seconds;
        GiveRecord(full, entry, sizeof(full));
    });
}

int32_t VORLUND_CALL vorlund_report_entry_text(vorlund_report report, uint32_t index, int32_t field,
                                               char* text, uint32_t room, uint32_t* length) {
    return GiveEntryText(__func__, report, index, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_report_entry_text16(vorlund_report report, uint32_t index, int32_t field,
                                                 uint16_t* text, uint32_t room, uint32_t* length) {
    return GiveEntryText(__func__, report, index, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_report_furthest(vorlund_report report, int32_t* index) {
    return Guarded(__func__, [&] {
        RequirePointer(index);
        const CUse<CReportObject> object(report);
        const vorlund::TDecodeEntry* const furthest = object->Get().GetFurthest();
        *index = furthest ? static_cast<int32_t>(furthest - object->Get().GetEntries().data()) : -1;
    });
}

int32_t VORLUND_CALL vorlund_report_text(vorlund_report report, int32_t field, char* text, uint32_t room,
                                         uint32_t* length) {
    return GiveReportText(__func__, report, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_report_text16(vorlund_report report, int32_t field, uint16_t* text,
                                           uint32_t room, uint32_t* length) {
    return GiveReportText(__func__, report, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_stream_chain_count(vorlund_stream stream, uint32_t* count) {
    return Guarded(__func__, [&] {
        RequirePointer(count);
        const CUse<CStreamObject> object(stream);
        *count = static_cast<uint32_t>(vorlund::ListChain(object->Get()).size());
    });
}

int32_t VORLUND_CALL vorlund_stream_chain_ids(vorlund_stream stream, uint32_t index, uint32_t* class_id,
                                              uint32_t* format_id) {
    return Guarded(__func__, [&] {
        const CUse<CStreamObject> object(stream);
        const vorlund::TChainLink link = LinkOf(object->Get(), index);
        if (class_id) GiveId(link.classId, class_id);
        if (format_id) GiveId(link.formatId, format_id);
    });
}

int32_t VORLUND_CALL vorlund_stream_chain_name(vorlund_stream stream, uint32_t index, char* text,
                                               uint32_t room, uint32_t* length) {
    return GiveChainName(__func__, stream, index, text, room, length);
}

int32_t VORLUND_CALL vorlund_stream_chain_name16(vorlund_stream stream, uint32_t index, uint16_t* text,
                                                 uint32_t room, uint32_t* length) {
    return GiveChainName(__func__, stream, index, text, room, length);
}
