/* The headers need nothing but the compiler. */
#include <vorlund_c.h>

uint32_t c_freestanding_size(void);
uint32_t c_freestanding_size(void) {
    return (uint32_t)sizeof(vorlund_error);
}
