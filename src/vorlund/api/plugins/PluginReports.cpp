#include "vorlund/api/plugins/PluginReports.h"

#include "vorlund/api/text/Printable.h"
#include "vorlund/api/text/TextFormat.h"

#include <vorlund/Path.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <string_view>
#include <utility>

namespace vorlund {
namespace {

/// By the number of the outcome.
constexpr const wchar* kReasons[] = {
    VRL_L("loading has begun"),
    VRL_L("loaded"),
    VRL_L("the file is no plug-in for this process"),
    VRL_L("the system does not load it"),
    VRL_L("an entry is missing"),
    VRL_L("its init entry returned false"),
    VRL_L("an entry raised an exception"),
    VRL_L("the program vorlund-plugin-scan cannot be started"),
    VRL_L("it ended the scan's process"),
    VRL_L("its scan did not end in time"),
    VRL_L("its scan gave no proper answer"),
    VRL_L("others may put files into this folder"),
    VRL_L("it is for another kind of machine"),
    VRL_L("it was cut short"),
    VRL_L("a library that it needs is missing"),
    VRL_L("it was built for another version of the library"),
    VRL_L("its table cannot be used"),
};
static_assert(std::size(kReasons) == PLUGIN_BAD_TABLE + 1);

const wchar* OrEmpty(const wchar* text) {
    return text ? text : VRL_L("");
}

/// The name of a class, which its registration has told if it was the plug-in's own.
CString FindName(const std::vector<registrations::TItem>& items, const CId& classId) {
    const auto found = std::find_if(items.begin(), items.end(), [&classId](const registrations::TItem& item) {
        return item.kind == registrations::TKind::Class && item.classId == classId;
    });
    return found != items.end() ? found->name : CString(classId.ToString().c_str());
}

} // namespace

TPluginResult DescribeRaised() {
    TPluginResult result{PLUGIN_RAISED};
    try {
        throw;
    } catch (const CException& raised) {
        result.detail = OrEmpty(raised.GetReason());
        result.exceptionType = raised.GetType();
        result.exceptionMethod = OrEmpty(raised.GetMethod());
    } catch (const std::exception& raised) {
        const std::string_view what = raised.what();
        result.detail.assign(what.begin(), what.end());
    } catch (...) {
        // It says nothing.
    }
    return result;
}

std::size_t CPluginReports::Begin(const CString& path) {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&path](const TPluginReport& item) { return item.path == path; });
    const auto place = static_cast<std::size_t>(found - items_.begin());
    TPluginReport report;
    report.path = path;
    report.reason = DescribeOutcome(report.outcome);
    if (found == items_.end()) {
        items_.push_back(report);
    } else {
        report.loads = found->loads;
        *found = std::move(report);
    }
    return place;
}

bool CPluginReports::Has(const CString& path) const {
    return std::any_of(items_.begin(), items_.end(),
                       [&path](const TPluginReport& item) { return item.path == path; });
}

void CPluginReports::SetInfo(std::size_t place, const TPluginInfoRecord& record) {
    TPluginReport& report = items_[place];
    report.name = MakePrintable(PathFromUtf8(record.name)).c_str();
    report.version = MakePrintable(PathFromUtf8(record.version)).c_str();
    report.licence = MakePrintable(PathFromUtf8(record.licence)).c_str();
    report.libraryVersion = record.libraryVersion;
    report.hasInfo = true;
}

void CPluginReports::SetNotes(std::size_t place, const registrations::TNotes& notes) {
    TPluginReport& report = items_[place];
    report.items.clear();
    report.libraries = notes.libraries.c_str();
    for (const registrations::TItem& item : notes.items)
        report.items.push_back(
            {static_cast<TPluginItemKind>(item.kind), item.classId, FindName(notes.items, item.classId)});
}

void CPluginReports::Set(std::size_t place, const TPluginResult& result) {
    TPluginReport& report = items_[place];
    report.outcome = result.outcome;
    report.code = result.code;
    report.reason = DescribeOutcome(result.outcome);
    report.exceptionType = result.exceptionType;
    if (result.outcome == PLUGIN_LOADED) ++report.loads;
    if (!result.detail.empty()) report.detail = result.detail.c_str();
    if (!result.exceptionMethod.empty()) report.exceptionMethod = result.exceptionMethod.c_str();
}

TPluginReport CPluginReports::Get(std::size_t place) const {
    if (place < items_.size()) return items_[place];
    TPluginReport none;
    none.reason = DescribeOutcome(PLUGIN_BEGUN);
    return none;
}

CString TPluginReport::Explain() const {
    wstring text = reason ? reason : DescribeOutcome(outcome);
    const auto add = [&text](const wchar* more) {
        text += VRL_L(": ");
        text += more;
    };
    if (exceptionMethod.Length() > 0) {
        const wchar* const type = CException::GetTypeName(exceptionType);
        add(type ? type : VRL_L("CException"));
    }
    if (detail.Length() > 0) add(detail.GetBuffer());
    return text.c_str();
}

const wchar* DescribeOutcome(TPluginOutcome outcome) {
    return kReasons[outcome];
}

wstring DescribeVersion(std::int32_t number) {
    wchar text[40];
    FormatArguments(text, std::size(text), VRL_L("%d.%d.%d"), number / VORLUND_MAKE_VERSION(1, 0, 0),
                    number / VORLUND_MAKE_VERSION(0, 1, 0) % 1000, number % 1000);
    return text;
}

} // namespace vorlund
