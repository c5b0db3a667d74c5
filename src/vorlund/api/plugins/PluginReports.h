// What came of each file that the plug-in store looked at.
#pragma once

#include <vorlund/PluginReport.h>

#include <cstddef>
#include <vector>

namespace vorlund {

/// How an attempt ended.
struct TPluginResult {
    TPluginOutcome outcome = PLUGIN_BEGUN;
    std::int32_t code = 0;
};

/// One report for each path, in the order of their first attempts. None is ever removed, so a place stays the
/// same while plug-ins run.
class CPluginReports {
public:
    /// The place of the report of `path`, which begins anew. Raises `std::bad_alloc`.
    std::size_t Begin(const CString& path);
    /// Whether something was ever reported of `path`.
    bool Has(const CString& path) const;
    void Set(std::size_t place, const TPluginResult& result) noexcept;

    std::size_t GetCount() const { return items_.size(); }
    TPluginReport Get(std::size_t place) const;

private:
    struct TItem {
        CString path;
        TPluginResult result;
    };
    std::vector<TItem> items_;
};

/// The outcome in words.
const wchar* DescribeOutcome(TPluginOutcome outcome);

} // namespace vorlund
