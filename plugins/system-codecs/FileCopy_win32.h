#pragma once

#include "FileCopy.h"

#include <objidl.h>

/// The bytes in memory, as a stream of COM; `Clone` gives each reader one with a position of its own.
struct CFileCopy::TState {
    ::IStream* stream = nullptr;
};
