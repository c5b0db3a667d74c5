/// \file
/// The library's exceptions for programs that catch `std::exception`. Only `AsStdExceptions` of this header
/// throws one: the library raises `CException`.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/String.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace vorlund {

/// A `CException` whose `what` is its one line, with copies of everything: it may be kept. Since version 0.1.
class CStdException : public std::runtime_error {
public:
    explicit CStdException(const CException& raised)
        : std::runtime_error(Narrow(raised.ToString())), type_(raised.GetType()), line_(raised.GetLine()),
          method_(raised.GetMethod()), file_(raised.GetFile()), reason_(raised.GetReason()) {}

    TExceptionType GetType() const { return type_; }
    int GetLine() const { return line_; }
    const wstring& GetMethod() const { return method_; }
    const wstring& GetFile() const { return file_; }
    const wstring& GetReason() const { return reason_; }

private:
    /// Units above 0x7F become question marks: `what` has no encoding.
    static std::string Narrow(const CString& text) {
        std::string narrow;
        for (const wchar* unit = text; *unit; ++unit) narrow += *unit < 0x80 ? static_cast<char>(*unit) : '?';
        return narrow;
    }

    TExceptionType type_;
    int line_;
    wstring method_;
    wstring file_;
    wstring reason_;
};

/// Calls `call`, and returns what it returns; a `CException` becomes a `CStdException`, all else passes on.
/// Since version 0.1.
template <class TCall> decltype(auto) AsStdExceptions(TCall&& call) {
    try {
        return std::forward<TCall>(call)();
    } catch (const CException& raised) {
        throw CStdException(raised);
    }
}

} // namespace vorlund
