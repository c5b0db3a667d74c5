// A file on the standard input.
#pragma once

#include <vorlund/StreamSelector.h>

/// All of the standard input, in memory: decoders go back and forth. Raises `TProgramError` when it cannot be
/// read.
vorlund::CInputStreamSelector ReadStandardInput();
