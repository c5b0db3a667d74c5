/// \file
/// Decoding in another process, for files or plug-ins that are not to be trusted.
#pragma once

#include <vorlund/DecodeReport.h>

#include <span>

namespace vorlund {

class IInputStream;

/// How decoders are kept apart. Since version 0.1.
struct TIsolation {
    /// The folders whose plug-ins the other process loads.
    std::span<const wchar* const> folders = {};
    /// And the one that `AddInstalledPlugins` finds.
    bool withInstalled = true;
    /// Is emptied, then filled; null for none. A decoder whose process died is the last entry,
    /// `DECODE_DIED`.
    CDecodeReport* report = nullptr;
    /// The longest time for an answer of the other process, in seconds, without what the source takes.
    unsigned int seconds = 10;
    /// The full path of the program `vorlund-plugin-scan`; null for the one that `CPluginStore::SetScanMode`
    /// finds.
    const wchar* helper = nullptr;
    /// The most memory that the other process may take beyond what it starts with, in MiB; 0 for no limit. On
    /// Linux all of its address space counts, on Windows what is committed, from Windows 8 on.
    unsigned int memory = 1024;
};

/// Decodes as `CCodecClassStore::DecodeStream` does, with the library's own decoders and those of plug-ins,
/// but in a process of its own, so that a decoder which is damaged, or which damaged data turn against its
/// user, ends that process and not this one. This process loads no plug-in for it, and classes that it has
/// registered itself take no part.
///
/// On Linux the other process can neither open a file for writing, nor change names or rights of files, nor
/// reach a network, nor start or signal another process; it can read what its user can read. On Windows it
/// has a low integrity level, which keeps it from writing to most files, and ends with this process; a
/// network is not kept from it. A system that offers neither refuses: nothing is decoded. An allocation
/// beyond the limit of memory fails there, which a decoder reports or dies of.
///
/// \param stream    the source; held and read, in blocks and ahead of the decoder, as long as the result
///                  lives. Its length counts as it is now.
/// \param formatId  the wanted format, not null
/// \param isolation  the limits of the process, its folders of plug-ins, and the report
/// \return a new stream with one reference for the caller, over `stream`. It reads in blocks of 64 KiB; a
///         query finds none of the further interfaces of the decoder. Its format is one of the library's
///         media formats with possible values, or one of another kind as the decoder gave it.
///
/// Raises `CNullPtrException` "stream is NULL", `CInvalidParameterException` "No format is wanted",
/// `CFailedException` "Cannot start the process of the decoders" and "This system does not isolate
/// processes", `CDataFormatException` "Cannot decode stream", and what the source raises. The stream's `Read`
/// raises `CIOException` "The process of the decoder died", "The process of the decoder does not answer",
/// "The process of the decoder gave no proper answer" or "The decoder failed", also from then on. One thread
/// at a time uses it and the source. Since version 0.1.
VRL_API IInputStream* DecodeIsolated(IInputStream* stream, const CId& formatId,
                                     const TIsolation& isolation = {});

} // namespace vorlund
