#include "vorlund/api/tables/TableText.h"

#include "vorlund/api/text/Printable.h"

#include <vorlund/Text.h>

#include <cstring>

namespace vorlund::tables {

wstring ReadText(const char* text) {
    if (!text) return {};
    return MakePrintable(TextFromUtf8({text, strnlen(text, kMaxText)}));
}

} // namespace vorlund::tables
