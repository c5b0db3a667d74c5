// From a raise site to the debugger: `Raise` (<vorlund/Exception.h>) builds the exception from a failure
// record; the constructor below formats the record into one line and sends it to the debugger output, and for
// a bug also to the message box; `EmitDebugText` (Debug.cpp) gives it to the handler that the application has
// set, or to the system. Only then is the exception thrown.
#include <vorlund/Exception.h>

#include "vorlund/api/text/TextNumbers.h"
#include "vorlund/api/values/DebugOutput.h"

#include <vorlund/String.h>

namespace vorlund {
namespace {

constexpr const wchar* kTypeNames[] = {VRL_L("CException"),
#define VRL_TYPE_NAME(value, className, enumerator) VRL_L(#className),
                                       VRL_EXCEPTION_SUBCLASSES(VRL_TYPE_NAME)
#undef VRL_TYPE_NAME
};
constexpr int kTypeCount = sizeof(kTypeNames) / sizeof(kTypeNames[0]);

constexpr int kLineCapacity = 256;

void FormatLine(wchar (&line)[kLineCapacity], const CException& exception) {
    // Piece by piece: a refused file takes several lines, and reading a format is half the price of one.
    TFormatDirective decimal;
    decimal.conversion = 'd';
    CTextOutput output(line, kLineCapacity);
    output.PutTerminated(VRL_L("Exception: type="));
    output.PutTerminated(CException::GetTypeName(exception.GetType()));
    output.PutTerminated(VRL_L(" | method="));
    output.PutTerminated(exception.GetMethod());
    output.PutTerminated(VRL_L(" | file="));
    output.PutTerminated(exception.GetFile());
    output.PutTerminated(VRL_L(" | line="));
    PutSigned(output, decimal, exception.GetLine());
    output.PutTerminated(VRL_L(" | reason="));
    output.PutTerminated(exception.GetReason());
    output.End();
}

} // namespace

CException::CException(const wchar* method, const wchar* file, int line, const wchar* reason,
                       TExceptionType type)
    : method_(method), file_(file), line_(line), reason_(reason), type_(type) {
    PrintMessage(DEBUG_MESSAGE_OUTPUT);
    if (type == EXCEPTION_TYPE_BUG) PrintMessage(DEBUG_MESSAGE_BOX);
}

// Out of line: each is its class's key function, so the type information exists once, in the library, and
// plug-ins and applications catch an exception of the library by its type, and the other way round.
CException::~CException() = default;
#define VRL_DESTRUCTOR(value, className, enumerator) className::~className() = default;
VRL_EXCEPTION_SUBCLASSES(VRL_DESTRUCTOR)
#undef VRL_DESTRUCTOR

const wchar* CException::GetTypeName(TExceptionType type) {
    return type >= 0 && type < kTypeCount ? kTypeNames[type] : nullptr;
}

CString CException::ToString() const {
    wchar line[kLineCapacity];
    FormatLine(line, *this);
    return line;
}

void CException::PrintMessage(TDebugMessageType destination) const {
    wchar line[kLineCapacity];
    FormatLine(line, *this);
    EmitDebugText(destination, line);
}

} // namespace vorlund
