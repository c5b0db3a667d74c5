// Why a file could not be opened.
#pragma once

#include <vorlund/Exception.h>

/// Why a file could not be opened and what to do about it, behind what the exception says; nothing for other
/// exceptions. Asked before another file is opened.
vorlund::wstring DescribeCause(const vorlund::CFileAccessException& error);
