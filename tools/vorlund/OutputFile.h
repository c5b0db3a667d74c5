// Where decoded PCM goes.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <memory>
#include <string>

/// A place for PCM. Nothing counts as written before `Keep`: without it, a file is removed.
class COutputFile {
public:
    /// \param name  UTF-8 file name, "-" for the standard output, or empty for nowhere
    /// \param raw   no header, whatever the name
    static std::unique_ptr<COutputFile> Create(const std::string& name, bool raw,
                                               const vorlund::TDataFormat_AudioPcm& format);

    COutputFile() = default;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    virtual ~COutputFile() = default;

    /// Appends bytes. Raises `TProgramError` or the library's exceptions.
    virtual void Write(const void*, std::uint64_t) {}
    /// Completes the output; raises as `Write`. Only `Keep` may follow.
    virtual void Finish() {}
    /// The output stays, and the command is done; raises as `Write`.
    virtual void Keep() {}
};
