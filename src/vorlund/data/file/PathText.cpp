#include "vorlund/data/file/PathText.h"

#include <algorithm>
#include <string_view>

namespace vorlund::pathtext {
namespace {

// Searches use views: those of CString raise when a unit is missing, which is normal in a path.
using TView = std::basic_string_view<wchar>;

constexpr wchar kSeparator = VRL_L('/');
constexpr wchar kDot = VRL_L('.');

TView ViewOf(const wchar* text) {
    return text ? TView(text) : TView();
}

CString ToString(TView view) {
    CString text;
    text.Allocate(static_cast<int>(view.size()));
    std::copy(view.begin(), view.end(), text.GetBuffer());
    text.GetBuffer()[view.size()] = 0;
    return text;
}

/// What follows the last `unit`; all of `text` without one.
TView After(TView text, wchar unit) {
    return text.substr(text.rfind(unit) + 1);
}

} // namespace

CString WithForwardSlashes(const wchar* path) {
    CString result(path);
    result.Replace(VRL_L('\\'), kSeparator);
    return result;
}

CString AsFolder(const wchar* path) {
    CString result = WithForwardSlashes(path);
    if (!ViewOf(result.GetBuffer()).ends_with(kSeparator)) result += VRL_L("/");
    return result;
}

CString Join(const wchar* folder, const wchar* name, wchar separator) {
    wstring path(ViewOf(folder));
    if (!path.ends_with(separator)) path += separator;
    return ToString(path += ViewOf(name));
}

CString WithoutSeparator(const wchar* folder, wchar separator) {
    TView view = ViewOf(folder);
    if (view.size() > 1 && view.ends_with(separator)) view.remove_suffix(1);
    return ToString(view);
}

CString GetName(const wchar* path) {
    return ToString(After(ViewOf(path), kSeparator));
}

CString GetFolder(const wchar* path) {
    const TView view = ViewOf(path);
    const std::size_t last = view.rfind(kSeparator);
    return last == TView::npos ? CString(VRL_L("./")) : ToString(view.substr(0, last + 1));
}

CString GetFolderName(const wchar* path) {
    TView view = ViewOf(path);
    if (view.ends_with(kSeparator)) view.remove_suffix(1);
    return ToString(After(view, kSeparator));
}

CString GetTitle(const wchar* name) {
    const TView view = ViewOf(name);
    return ToString(view.substr(0, view.rfind(kDot)));
}

CString GetExtension(const wchar* name) {
    const TView view = ViewOf(name);
    return view.find(kDot) == TView::npos ? CString() : ToString(After(view, kDot));
}

} // namespace vorlund::pathtext
