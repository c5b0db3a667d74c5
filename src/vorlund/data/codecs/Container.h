// Which container a file is, by its first bytes: for messages only, never to decide anything.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace vorlund {

/// A kind of file, and who reads it.
struct TContainer {
    const wchar* name;
    /// The plug-in that reads it, and the name of its decoder class; null where there is none.
    const wchar* plugin;
    const wchar* decoder;
};

/// As many bytes as tell all of them apart.
inline constexpr std::size_t kContainerHead = 64;

/// The container whose files begin with `head`, or null.
const TContainer* FindContainer(std::span<const std::uint8_t> head);

} // namespace vorlund
