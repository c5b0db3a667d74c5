/// \file
/// `CSession`, the library's life in a scope.
#pragma once

#include <vorlund/Vorlund.h>

namespace vorlund {

/// Opens the library, and closes it when it goes out of scope, whatever has happened in between. One at a
/// time, on the application's main thread:
///
/// \code{.cpp}
/// const CSession session;
/// // Everything else, in the scope of it.
/// const auto list = CreateAs<IObjectList>(classid::CObjectList);
/// \endcode
///
/// Objects that are held outside of it, in statics for example, must be released before. Since version 0.1.
class CSession {
public:
    /// `AddInstalledPlugins` (unless `usesInstalledPlugins` is false) and `v.Init()`. What they raise passes
    /// on, with the library closed as if nothing had been tried.
    explicit CSession(bool usesInstalledPlugins = true) {
        try {
            if (usesInstalledPlugins) AddInstalledPlugins();
            v.Init();
        } catch (...) {
            v.Abandon();
            throw;
        }
    }
    CSession(const CSession&) = delete;
    CSession& operator=(const CSession&) = delete;
    /// `v.Abandon()`, which never raises.
    ~CSession() { v.Abandon(); }
};

} // namespace vorlund
