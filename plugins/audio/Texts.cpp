#include "Texts.h"

#include <vorlund/Path.h>

#include <algorithm>
#include <mutex>
#include <set>

using namespace vorlund;

wstring MakeText(const char* text) {
    // What is a folder's border in a path.
    constexpr wchar kBackslashOfName = 0xDC5C;
    wstring result = PathFromUtf8(text);
    std::ranges::replace(result, kBackslashOfName, wchar{'\\'});
    return result;
}

const wchar* KeepReason(const char* text, const wchar* otherwise) {
    constexpr std::size_t kMaxReasons = 100;
    static std::mutex mutex;
    static std::set<wstring> reasons;
    const wstring reason = MakeText(text);
    if (reason.empty()) return otherwise;
    const std::scoped_lock lock(mutex);
    if (reasons.size() >= kMaxReasons && !reasons.contains(reason)) return otherwise;
    return reasons.insert(reason).first->c_str();
}
