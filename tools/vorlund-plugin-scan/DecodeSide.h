// The side of `DecodeIsolated` (IsolatedDecoder.h) on which decoders run.
#pragma once

#include <string>
#include <vector>

/// Decodes one stream for the process at the other end of the channel, until that closes it.
[[noreturn]] void Decode(const std::string& channel, const std::vector<std::string>& folders);
