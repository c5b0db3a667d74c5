#include "PluginTexts.h"

#include <vorlund/Debug.h>
#include <vorlund/Vorlund.h>

#include <algorithm>

using namespace vorlund;

std::vector<TPluginReport> GetFileReports() {
    const CPluginStore& store = v.GetPluginStore();
    std::vector<TPluginReport> reports;
    for (unsigned int i = 0; i < store.GetReportCount(); ++i) {
        TPluginReport report = store.GetReport(i);
        if (report.outcome != PLUGIN_FOLDER_OPEN) reports.push_back(std::move(report));
    }
    return reports;
}

wstring GetPluginTitle(const TPluginReport& report) {
    if (report.name.Length() > 0) return report.name.GetBuffer();
    const wstring path = report.path.GetBuffer();
    const wstring name = path.substr(path.find_last_of(VRL_L("/\\")) + 1);
    return name.substr(0, name.rfind(VRL_L('.')));
}

bool IsLeftOut(const TPluginReport& report) {
    switch (report.outcome) {
    case PLUGIN_BEGUN:
    case PLUGIN_LOADED:
    case PLUGIN_NO_PLUGIN:
    case PLUGIN_DECLINED:
    case PLUGIN_FOLDER_OPEN:
        return false;
    default:
        return true;
    }
}

const TPluginReport* FindPlugin(const std::vector<TPluginReport>& reports, const wstring& title) {
    const TPluginReport* found = nullptr;
    for (const TPluginReport& report : reports) {
        if (GetPluginTitle(report) != title) continue;
        if (!found || report.outcome == PLUGIN_LOADED) found = &report;
    }
    return found;
}

const TPluginReport* FindBringer(const std::vector<TPluginReport>& reports, TPluginItemKind kind,
                                 const CId& classId) {
    const auto brings = [&](const TPluginReport& report) {
        return std::any_of(report.items.begin(), report.items.end(), [&](const TPluginItem& item) {
            return item.kind == kind && item.classId == classId;
        });
    };
    const auto found = std::find_if(reports.begin(), reports.end(), brings);
    return found != reports.end() ? &*found : nullptr;
}

wstring DescribeBringer(const TPluginReport* report) {
    if (!report) return VRL_L("the library");
    return VRL_L("plug-in '") + GetPluginTitle(*report) + VRL_L("'");
}

void PrintLeftOutPlugins() {
    for (const TPluginReport& report : GetFileReports()) {
        if (!IsLeftOut(report)) continue;
        CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("vorlund: plug-in '%s' is left out: %s"),
                             report.path.GetBuffer(), report.Explain().GetBuffer());
    }
}
