/// \file
/// Everything that changes a text: what the suites on texts and memory do.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include <functional>
#include <string>
#include <utility>

namespace vorlund::test {

struct TStringChange {
    const char* name;
    std::function<void(CString&)> act;
};

inline const std::string kLongBytes(200, 'n');

inline const TStringChange kStringChanges[] = {
    {"assign narrow", [](CString& text) { text = "another text"; }},
    {"assign wide", [](CString& text) { text = VRL_L("another text"); }},
    {"assign text", [](CString& text) { text = CString("another text"); }},
    {"assign a part of itself",
     [](CString& text) { text = static_cast<const wchar*>(text.GetBuffer() + 2); }},
    {"append narrow", [](CString& text) { text += "more"; }},
    {"append wide", [](CString& text) { text += VRL_L("more"); }},
    {"append itself", [](CString& text) { text += text; }},
    {"allocate", [](CString& text) { text.Allocate(100); }},
    {"remove a range", [](CString& text) { text.Remove(1, 2); }},
    {"replace by longer", [](CString& text) { text.Replace(VRL_L("b"), VRL_L("xyz")); }},
    {"replace by shorter", [](CString& text) { text.Replace(VRL_L("bc"), VRL_L("x")); }},
    {"replace reaching back", [](CString& text) { text.Replace(VRL_L("ab"), VRL_L("b")); }},
    {"replace growing", [](CString& text) { text.Replace(VRL_L("ab"), VRL_L("bba")); }},
    {"remove a unit", [](CString& text) { text.Remove(wchar{'b'}); }},
    {"remove wide", [](CString& text) { text.Remove(VRL_L("ab")); }},
    {"remove narrow", [](CString& text) { text.Remove("ab"); }},
    {"remove long narrow", [](CString& text) { text.Remove(kLongBytes.c_str()); }},
    {"minus and assign", [](CString& text) { text -= VRL_L("ab"); }},
};

/// Makes the change; what the change raises when it finds nothing is no matter here.
inline void Apply(const TStringChange& change, CString& text) {
    try {
        change.act(text);
    } catch (const CObjectNotFoundException&) {
    }
}

} // namespace vorlund::test
