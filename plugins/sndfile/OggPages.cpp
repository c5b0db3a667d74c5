#include "OggPages.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

/// Two pages of the greatest size.
constexpr std::int64_t kTailSize = 2 * 65307;
constexpr std::string_view kMagic{"OggS\0", 5};
constexpr std::size_t kFrameAt = 6;
constexpr std::size_t kSerialAt = 14;
constexpr std::size_t kHeadSize = 27;

std::int64_t LoadFrame(const char* page) {
    std::int64_t frame = 0;
    std::memcpy(&frame, page + kFrameAt, sizeof frame);
    return frame;
}

} // namespace

std::int64_t CountFramesOfLastPage(CVirtualFile& file) {
    std::vector<char> tail(static_cast<std::size_t>(std::min(file.GetLength(), kTailSize)));
    file.Seek(file.GetLength() - static_cast<std::int64_t>(tail.size()));
    tail.resize(static_cast<std::size_t>(file.Read(tail.data(), static_cast<std::int64_t>(tail.size()))));
    const std::string_view bytes(tail.data(), tail.size());
    const char* last = nullptr;
    for (std::size_t at = bytes.rfind(kMagic); at != bytes.npos;
         at = at == 0 ? bytes.npos : bytes.rfind(kMagic, at - 1)) {
        // -1: no packet ends on this page.
        if (at + kHeadSize > bytes.size() || LoadFrame(tail.data() + at) < 0) continue;
        const char* const page = tail.data() + at;
        if (!last)
            last = page;
        else if (std::memcmp(last + kSerialAt, page + kSerialAt, 4) == 0)
            return LoadFrame(last) - LoadFrame(page);
    }
    return -1;
}
