// Plug-ins.

#include "vorlund_c/plugin.h"

#include "Guard.h"
#include "Records.h"
#include "Texts.h"

#include <vorlund/Vorlund.h>

namespace vorlund::capi {

namespace {

template <class TUnit> std::int32_t AddPath(const char* function, const TUnit* path) noexcept {
    return GuardedAlways(function, [&] { v.GetPluginStore().AddPluginPath(TakePath(path).c_str()); });
}

template <class TUnit>
std::int32_t SetScan(const char* function, std::int32_t scans, const TUnit* helper) noexcept {
    return GuardedAlways(function, [&] {
        const TPluginScanMode mode = scans != 0 ? PLUGIN_SCAN_CHILD : PLUGIN_SCAN_NONE;
        if (!helper) return v.GetPluginStore().SetScanMode(mode);
        v.GetPluginStore().SetScanMode(mode, TakePath(helper).c_str());
    });
}

template <class TUnit>
std::int32_t LoadFile(const char* function, const TUnit* path, std::int32_t* outcome) noexcept {
    return Guarded(function, [&] {
        RequirePointer(outcome);
        *outcome = v.GetPluginStore().LoadPluginFile(TakePath(path).c_str());
    });
}

template <class TUnit>
std::int32_t GivePath(const char* function, std::uint32_t index, TUnit* text, std::uint32_t room,
                      std::uint32_t* length) noexcept {
    return GuardedAlways(function, [&] {
        Require(index < v.GetPluginStore().GetPluginPathCount(), "There is no such folder");
        GiveText(v.GetPluginStore().GetPluginPath(index), text, room, length);
    });
}

TPluginReport ReportAt(std::uint32_t index) {
    Require(index < v.GetPluginStore().GetReportCount(), "There is no such report");
    return v.GetPluginStore().GetReport(index);
}

CString FieldOf(const TPluginReport& report, std::int32_t field) {
    switch (field) {
    case VORLUND_PLUGIN_TEXT_PATH:
        return report.path;
    case VORLUND_PLUGIN_TEXT_EXPLANATION:
        return report.Explain();
    case VORLUND_PLUGIN_TEXT_DETAIL:
        return report.detail;
    case VORLUND_PLUGIN_TEXT_NAME:
        return report.name;
    case VORLUND_PLUGIN_TEXT_VERSION:
        return report.version;
    case VORLUND_PLUGIN_TEXT_LICENCE:
        return report.licence;
    case VORLUND_PLUGIN_TEXT_LIBRARIES:
        return report.libraries;
    case VORLUND_PLUGIN_TEXT_METHOD:
        return report.exceptionMethod;
    default:
        throw CFailure(VORLUND_ERROR_ARGUMENT, "There is no such text");
    }
}

template <class TUnit>
std::int32_t GiveReportText(const char* function, std::uint32_t index, std::int32_t field, TUnit* text,
                            std::uint32_t room, std::uint32_t* length) noexcept {
    return GuardedAlways(function, [&] { GiveText(FieldOf(ReportAt(index), field), text, room, length); });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;
using vorlund::v;

int32_t VORLUND_CALL vorlund_plugin_add_path(const char* path) {
    return AddPath(__func__, path);
}

int32_t VORLUND_CALL vorlund_plugin_add_path16(const uint16_t* path) {
    return AddPath(__func__, path);
}

int32_t VORLUND_CALL vorlund_plugin_clear_paths(void) {
    return GuardedAlways(__func__, [] { v.GetPluginStore().ClearPluginPaths(); });
}

int32_t VORLUND_CALL vorlund_plugin_path_count(uint32_t* count) {
    return GuardedAlways(__func__, [&] {
        RequirePointer(count);
        *count = v.GetPluginStore().GetPluginPathCount();
    });
}

int32_t VORLUND_CALL vorlund_plugin_path(uint32_t index, char* text, uint32_t room, uint32_t* length) {
    return GivePath(__func__, index, text, room, length);
}

int32_t VORLUND_CALL vorlund_plugin_path16(uint32_t index, uint16_t* text, uint32_t room, uint32_t* length) {
    return GivePath(__func__, index, text, room, length);
}

int32_t VORLUND_CALL vorlund_plugin_set_scan(int32_t scans, const char* helper) {
    return SetScan(__func__, scans, helper);
}

int32_t VORLUND_CALL vorlund_plugin_set_scan16(int32_t scans, const uint16_t* helper) {
    return SetScan(__func__, scans, helper);
}

int32_t VORLUND_CALL vorlund_plugin_set_strict(int32_t is_strict) {
    return GuardedAlways(__func__, [&] {
        v.GetPluginStore().SetFailureMode(is_strict != 0 ? vorlund::PLUGIN_FAILURE_PASSES_ON
                                                         : vorlund::PLUGIN_FAILURE_REPORTED);
    });
}

int32_t VORLUND_CALL vorlund_plugin_load_file(const char* path, int32_t* outcome) {
    return LoadFile(__func__, path, outcome);
}

int32_t VORLUND_CALL vorlund_plugin_load_file16(const uint16_t* path, int32_t* outcome) {
    return LoadFile(__func__, path, outcome);
}

int32_t VORLUND_CALL vorlund_plugin_report_count(uint32_t* count) {
    return GuardedAlways(__func__, [&] {
        RequirePointer(count);
        *count = v.GetPluginStore().GetReportCount();
    });
}

int32_t VORLUND_CALL vorlund_plugin_get_report(uint32_t index, vorlund_plugin_report* report) {
    return GuardedAlways(__func__, [&] {
        const vorlund::TPluginReport found = ReportAt(index);
        vorlund_plugin_report full{};
        full.outcome = found.outcome;
        full.code = found.code;
        full.exception_type = found.exceptionType;
        full.library_version = found.libraryVersion;
        full.items = static_cast<uint32_t>(found.items.size());
        full.loads = found.loads;
        GiveRecord(full, report, sizeof(full));
    });
}

int32_t VORLUND_CALL vorlund_plugin_report_text(uint32_t index, int32_t field, char* text, uint32_t room,
                                                uint32_t* length) {
    return GiveReportText(__func__, index, field, text, room, length);
}

int32_t VORLUND_CALL vorlund_plugin_report_text16(uint32_t index, int32_t field, uint16_t* text,
                                                  uint32_t room, uint32_t* length) {
    return GiveReportText(__func__, index, field, text, room, length);
}
