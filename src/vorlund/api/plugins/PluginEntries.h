// The names of a plug-in's entry points.
#pragma once

#include <string_view>

namespace vorlund {

/// The name of an exported function, the same on every system: what one Windows compiler makes of the C++
/// name.
///
/// ELF knows no name with "@@" in it: there "name@@version" is the symbol `name` in its default version
/// `version`. cmake/VorlundPlugin.{def,ld,map} export the entry points of plug-ins under these names.
struct TPluginEntryName {
    constexpr explicit TPluginEntryName(const char* exported) : whole(exported) {
        const std::string_view text(exported);
        const std::size_t mark = text.find("@@");
        text.copy(symbol, mark);
        text.copy(version, std::string_view::npos, mark + 2);
    }

    const char* whole;
    char symbol[24]{};
    char version[8]{};
};

inline constexpr TPluginEntryName kInitEntryName("?VrlInitPlugin@@YA_NXZ");
inline constexpr TPluginEntryName kCloseEntryName("?VrlClosePlugin@@YAXXZ");

/// The table of a plug-in (PluginTable.h) as data, and the function that returns its address; the same names
/// on every system, without a version on ELF.
inline constexpr std::string_view kTableName("vorlund_plugin_v1");
inline constexpr std::string_view kTableFunctionName("vorlund_get_plugin_v1");

} // namespace vorlund
