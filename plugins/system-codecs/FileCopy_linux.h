#pragma once

#include "FileCopy.h"

/// A file without a name, which goes when its last descriptor does.
struct CFileCopy::TState {
    int descriptor = -1;
};
