#include "Diagnostics.h"

#include <utility>

using namespace vorlund;

namespace {

constexpr std::basic_string_view<wchar> kReasonMark = VRL_L("| reason=");

} // namespace

CDiagnostics::CDiagnostics() {
    CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, &OnMessage, this);
    // A box would wait for somebody who may not be there; the failure is printed as a line anyway.
    CDebug::SetHandler(DEBUG_MESSAGE_BOX, &OnMessage, this);
}

CDiagnostics::~CDiagnostics() {
    CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, nullptr);
    CDebug::SetHandler(DEBUG_MESSAGE_BOX, nullptr);
}

void CDiagnostics::PrintField(const char* label, const wstring& value) const {
    CDebug::PrintMessage(report_, VRL_L("%-9S %s"), label, value.c_str());
}

void CDiagnostics::PrintField(const char* label, const std::string& value) const {
    CDebug::PrintMessage(report_, VRL_L("%-9S %S"), label, value.c_str());
}

void CDiagnostics::PrintError(const wchar* text) const {
    CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("vorlund: %s"), text);
}

void CDiagnostics::OnMessage(TDebugMessageType type, const wchar* text, void* user) {
    if (type == DEBUG_MESSAGE_OUTPUT) static_cast<CDiagnostics*>(user)->Note(text);
}

void CDiagnostics::Note(std::basic_string_view<wchar> line) {
    const std::size_t mark = line.rfind(kReasonMark);
    if (mark == line.npos) return;
    formerReason_ = std::exchange(reason_, wstring(line.substr(mark + kReasonMark.size())));
}
