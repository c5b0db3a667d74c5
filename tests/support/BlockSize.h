/// \file
/// What the system's allocator knows of its blocks.
#pragma once

#include <cstddef>

namespace vorlund::test {

/// The usable size of a block of `malloc`'s.
std::size_t BlockSize(void* memory);

} // namespace vorlund::test
