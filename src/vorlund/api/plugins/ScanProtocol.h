// What the program vorlund-plugin-scan tells the process that started it, through a pipe: messages of a fixed
// size, one at each stage, the last with the result. Both are of one machine, so numbers have its order of
// bytes.
//
// The program is started with two arguments: the number of the pipe's end that it writes to, and the path of
// the plug-in.
#pragma once

#include <cstdint>

namespace vorlund::pluginscan {

enum class TStage : std::uint32_t {
    Loading = 1, ///< about to load and initialise
    Closing,     ///< about to close and unload
    Done,        ///< the result follows; the process ends
};

struct TMessage {
    std::uint32_t mark;
    /// The size of a message.
    std::uint32_t size;
    TStage stage;
    /// At `Done` the outcome and its code, as in `TPluginReport`, and what else is there: texts of UTF-16, as
    /// much of them as there is room for, ended by a zero.
    std::int32_t outcome;
    std::int32_t code;
    std::int32_t exceptionType;
    char16_t exceptionMethod[128];
    char16_t detail[256];
};
static_assert(sizeof(TMessage) == 792);

constexpr std::uint32_t kMark = 0x4E435356;
/// A scan longer than this is given up, in seconds.
constexpr unsigned int kMaxScanSeconds = 10;

} // namespace vorlund::pluginscan
