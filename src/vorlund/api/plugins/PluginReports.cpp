#include "vorlund/api/plugins/PluginReports.h"

#include <algorithm>
#include <iterator>

namespace vorlund {
namespace {

/// By the number of the outcome.
constexpr const wchar* kReasons[] = {
    VRL_L("loading has begun"),
    VRL_L("loaded"),
    VRL_L("the file is no plug-in for this process"),
    VRL_L("the system does not load it; a library or symbol that it needs may be missing"),
    VRL_L("an entry is missing"),
    VRL_L("its init entry returned false"),
    VRL_L("an entry raised an exception"),
    VRL_L("the program vorlund-plugin-scan cannot be started"),
    VRL_L("it ended the scan's process"),
    VRL_L("its scan did not end in time"),
    VRL_L("its scan gave no proper answer"),
    VRL_L("others may put files into this folder"),
};
static_assert(std::size(kReasons) == PLUGIN_FOLDER_OPEN + 1);

} // namespace

std::size_t CPluginReports::Begin(const CString& path) {
    const auto found =
        std::find_if(items_.begin(), items_.end(), [&path](const TItem& item) { return item.path == path; });
    const auto place = static_cast<std::size_t>(found - items_.begin());
    if (found == items_.end())
        items_.push_back({path, {}});
    else
        found->result = {};
    return place;
}

bool CPluginReports::Has(const CString& path) const {
    return std::any_of(items_.begin(), items_.end(),
                       [&path](const TItem& item) { return item.path == path; });
}

void CPluginReports::Set(std::size_t place, const TPluginResult& result) noexcept {
    items_[place].result = result;
}

TPluginReport CPluginReports::Get(std::size_t place) const {
    if (place >= items_.size()) return {{}, PLUGIN_BEGUN, 0, DescribeOutcome(PLUGIN_BEGUN)};
    const TItem& item = items_[place];
    return {item.path, item.result.outcome, item.result.code, DescribeOutcome(item.result.outcome)};
}

const wchar* DescribeOutcome(TPluginOutcome outcome) {
    return kReasons[outcome];
}

} // namespace vorlund
