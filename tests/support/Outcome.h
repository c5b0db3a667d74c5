/// \file
/// How a call ended, in one line.
#pragma once

#include "support/Text.h"

#include <vorlund/Exception.h>

#include <string>

namespace vorlund::test {

/// An exception in the form "CIOException vorlund::CFile::Open src/vorlund/File:12 reason".
inline std::string Describe(const CException& exception) {
    return Narrow(CException::GetTypeName(exception.GetType())) + ' ' + Narrow(exception.GetMethod()) + ' ' +
           Narrow(exception.GetFile()) + ':' + std::to_string(exception.GetLine()) + ' ' +
           Narrow(exception.GetReason());
}

/// What `act` raises, described, or "nothing". Exceptions that are not the library's are "a foreign
/// exception".
template <class TAct> std::string Outcome(const TAct& act) {
    try {
        act();
    } catch (const CException& exception) {
        return Describe(exception);
    } catch (...) {
        return "a foreign exception";
    }
    return "nothing";
}

} // namespace vorlund::test
