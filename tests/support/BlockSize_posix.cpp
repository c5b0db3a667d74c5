#include "support/BlockSize.h"

#include <malloc.h>

std::size_t vorlund::test::BlockSize(void* memory) {
    return malloc_usable_size(memory);
}
