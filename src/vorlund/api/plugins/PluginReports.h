// What came of each file that the plug-in store looked at.
#pragma once

#include "vorlund/api/objects/Registrations.h"

#include <vorlund/PluginInfo.h>
#include <vorlund/PluginReport.h>

#include <cstddef>
#include <vector>

namespace vorlund {

/// How an attempt ended. One without texts takes no memory.
struct TPluginResult {
    TPluginOutcome outcome = PLUGIN_BEGUN;
    std::int32_t code = 0;
    wstring detail = {};
    TExceptionType exceptionType = EXCEPTION_TYPE_GENERIC;
    wstring exceptionMethod = {};
};

/// `PLUGIN_RAISED` with what the exception says that is being handled. Raises `std::bad_alloc`.
TPluginResult DescribeRaised();

/// One report for each path, in the order of their first attempts. None is ever removed, so a place stays the
/// same while plug-ins run.
class CPluginReports {
public:
    /// The place of the report of `path`, which begins anew. Raises `std::bad_alloc`.
    std::size_t Begin(const CString& path);
    /// Whether something was ever reported of `path`.
    bool Has(const CString& path) const;
    /// What the file says of itself. Raises `std::bad_alloc`.
    void SetInfo(std::size_t place, const TPluginInfoRecord& record);
    /// What its init entry has noted. Raises `std::bad_alloc`.
    void SetNotes(std::size_t place, const registrations::TNotes& notes);
    bool HasItems(std::size_t place) const { return !items_[place].items.empty(); }
    /// Raises `std::bad_alloc` where there are texts.
    void Set(std::size_t place, const TPluginResult& result);

    std::size_t GetCount() const { return items_.size(); }
    TPluginReport Get(std::size_t place) const;

private:
    std::vector<TPluginReport> items_;
};

/// The outcome in words.
const wchar* DescribeOutcome(TPluginOutcome outcome);

/// The version in words: "0.1.0".
wstring DescribeVersion(std::int32_t number);

} // namespace vorlund
