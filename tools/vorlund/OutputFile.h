// Where decoded PCM goes.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// A place for PCM. Nothing counts as written before `Keep`: without it, a file is removed.
class COutputFile {
public:
    /// \param name    UTF-8 file name, "-" for the standard output, or empty for nowhere
    /// \param raw     no header, whatever the name
    /// \param length  how many bytes are expected, when that is known: a WAV file then needs no room for the
    ///                sizes of a large one, and a device gets the right header
    static std::unique_ptr<COutputFile> Create(const std::string& name, bool raw,
                                               const vorlund::TDataFormat_AudioPcm& format,
                                               std::optional<std::uint64_t> length = {});

    COutputFile() = default;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    virtual ~COutputFile() = default;

    /// Appends bytes. Raises `TProgramError` or the library's exceptions.
    virtual void Write(const void* bytes, std::uint64_t count) = 0;
    /// A stream that writes at the end of the output, and with positions where the output is a file; valid
    /// while this lives.
    virtual vorlund::CRefPtr<vorlund::IOutputStream> OpenStream() = 0;
    /// Completes the output; raises as `Write`. Only `Keep` may follow.
    virtual void Finish() = 0;
    /// The output stays, and the command is done; raises as `Write`.
    virtual void Keep() = 0;
};
