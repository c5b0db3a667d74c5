#include <vorlund/TextReader.h>

#include "vorlund/api/values/StringFailures.h"
#include "vorlund/serial/CharUnits.h"

#include <cstddef>

namespace vorlund {
namespace {

using namespace stringfailures;

constexpr int kBufferSize = 1024;

} // namespace

CTextReader::CTextReader(IInputStream* stream, TCharFormat charFormat)
    : CBufferedReader(stream, kBufferSize), charFormat_(charFormat) {}

CTextReader::~CTextReader() noexcept(false) = default;

CString CTextReader::ReadLine() {
    const std::size_t unitSize = UnitSize(charFormat_);
    for (;;) {
        FillBuffer();
        if (buffered_ == 0) break;
        const std::size_t count = static_cast<std::size_t>(buffered_) / unitSize;
        const std::size_t lineFeed = FindStreamUnit(buffer_, count, 10, charFormat_);
        if (lineFeed < count) {
            RemoveBufferedData(static_cast<int>((lineFeed + 1) * unitSize));
            break;
        }
        Flush();
    }
    // Kept for callers: this never returns. When the carriage returns are removed from the line, the search
    // for one more finds none and raises. So the line is not even put together; and nothing here is left to
    // destroy, which makes the exception cheaper.
    Raise<CObjectNotFoundException>(kFirstUnit);
}

} // namespace vorlund
