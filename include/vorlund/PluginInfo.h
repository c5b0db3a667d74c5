/// \file
/// What a plug-in tells of itself without running: a record of fixed size in the section ".vrlinfo" of its
/// file. It is optional. With it, reports name the plug-in, and the plug-in store refuses one that was built
/// for another version of the library before any of its code runs.
///
/// A plug-in writes it once, outside all namespaces and functions:
///
///     VRL_PLUGIN_INFO("sndfile", "1.0", "MIT")
#pragma once

#include <vorlund/Platform.h>
#include <vorlund/Version.h>

#include <cstdint>
#include <string_view>

namespace vorlund {

/// The record, as it lies in the file; numbers have the order of bytes of the file's machine. Later versions
/// may append fields. Since version 0.1.
struct alignas(8) TPluginInfoRecord {
    /// `kPluginInfoMark`.
    char mark[8];
    /// Of the record, in bytes.
    std::uint32_t size;
    /// `VORLUND_VERSION` of the headers that the plug-in was compiled with; 0 for one that uses nothing of
    /// the library but a table (PluginTable.h).
    std::int32_t libraryVersion;
    /// UTF-8, each ended by a zero: the plug-in's name, its own version, and its licence as SPDX names it.
    char name[64];
    char version[32];
    char licence[64];
};
static_assert(sizeof(TPluginInfoRecord) == 176);

inline constexpr std::string_view kPluginInfoMark{"VRLINFO\0", 8};

/// Whether a plug-in that was built for version `plugin` of the library runs with version `library`; both
/// as `VORLUND_MAKE_VERSION` makes them. It does when the major numbers are equal, and while these are 0 the
/// minor numbers too, and `plugin` is not the later one. 0 stands for a plug-in with a table alone, which has
/// a version of its own: it runs with every version. Since version 0.1.
constexpr bool IsPluginCompatible(std::int32_t plugin, std::int32_t library) noexcept {
    constexpr std::int32_t kMajor = VORLUND_MAKE_VERSION(1, 0, 0);
    constexpr std::int32_t kMinor = VORLUND_MAKE_VERSION(0, 1, 0);
    const std::int32_t unit = library < kMajor ? kMinor : kMajor;
    return plugin == 0 || (plugin > 0 && plugin <= library && plugin / unit == library / unit);
}

/// The record of a plug-in; a text that is too long does not compile. For `VRL_PLUGIN_INFO`. Since version
/// 0.1.
consteval TPluginInfoRecord MakePluginInfo(std::string_view name, std::string_view version,
                                           std::string_view licence) {
    TPluginInfoRecord record = {};
    const auto put = [](std::string_view text, char* field, std::size_t room) {
        if (text.size() >= room) throw "the text is too long for its field";
        text.copy(field, text.size());
    };
    kPluginInfoMark.copy(record.mark, sizeof record.mark);
    record.size = sizeof record;
    record.libraryVersion = VORLUND_VERSION;
    put(name, record.name, sizeof record.name);
    put(version, record.version, sizeof record.version);
    put(licence, record.licence, sizeof record.licence);
    return record;
}

/// Names, during `VrlInitPlugin`, a library that the plug-in uses, with its version: "libsndfile 1.2.0". The
/// plug-in's report (PluginReport.h) has it. At other times it does nothing. Raises nothing: what there is no
/// memory for is lost. Since version 0.1.
VRL_API void NotePluginLibrary(const wchar* text);

} // namespace vorlund

/// Defines the record of the plug-in: three literals, its name (at most 63 bytes of UTF-8), its own version
/// (31) and its licence (63). Since version 0.1.
#define VRL_PLUGIN_INFO(name, version, licence)                                                              \
    extern const ::vorlund::TPluginInfoRecord vrlPluginInfo;                                                 \
    __attribute__((used, section(".vrlinfo"))) const ::vorlund::TPluginInfoRecord vrlPluginInfo =            \
        ::vorlund::MakePluginInfo(name, version, licence);
