#include "Diagnostics.h"

using namespace vorlund;

namespace {

void Drop(TDebugMessageType, const wchar*, void*) {}

} // namespace

CDiagnostics::CDiagnostics() {
    CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, &Drop);
    // A box would wait for somebody who may not be there; the failure is printed as a line anyway.
    CDebug::SetHandler(DEBUG_MESSAGE_BOX, &Drop);
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

void CDiagnostics::PrintBreak() const {
    CDebug::PrintMessage(report_, VRL_L(""));
}

void CDiagnostics::PrintError(const wchar* text) const {
    CDebug::PrintMessage(DEBUG_MESSAGE_STDERR, VRL_L("vorlund: %s"), text);
}
