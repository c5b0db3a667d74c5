// From a plug-in's file to its first use, the second step: `CPluginStore` (PluginStore.cpp) finds a file by
// its name and asks `Look` here. What that looks at is the system's part: ELF images in
// PluginImage_linux.cpp, PE images in PluginImage_win32.cpp. A file that passes is loaded by PluginModule.h,
// again from `CPluginStore::TData::Load`.
#include "vorlund/api/plugins/PluginImage.h"

#include "vorlund/api/plugins/PluginEntries.h"
#include "vorlund/data/file/FileSystem.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace vorlund {
namespace {

/// The most bytes of names that are searched. The largest libraries have a tenth of it.
constexpr std::uint64_t kMaxNames = std::uint64_t{64} << 20;
/// How many of them are held at a time.
constexpr std::size_t kPiece = std::size_t{64} << 10;

} // namespace

CImageFile::CImageFile(const wchar* path) : file_(filesystem::OpenInput(path, length_)) {}

CImageFile::~CImageFile() {
    if (file_ >= 0) filesystem::CloseInput(file_);
}

bool CImageFile::Read(std::uint64_t offset, void* buffer, std::size_t size) const {
    return Has(offset, size) && filesystem::ReadAt(file_, static_cast<std::int64_t>(offset), buffer,
                                                   static_cast<std::uint32_t>(size)) == size;
}

bool CImageFile::Has(std::uint64_t offset, std::uint64_t size) const {
    const auto length = static_cast<std::uint64_t>(length_);
    return offset <= length && size <= length - offset;
}

TImageLook CImageFile::LookForNames(const TRange& range, const char* first, const char* second) const {
    if (range.size > kMaxNames) return {TImageKind::NoLibrary};
    const std::string wanted[] = {std::string(first) + '\0', std::string(second) + '\0',
                                  std::string(kTableName) + '\0', std::string(kTableFunctionName) + '\0'};
    bool isFound[std::size(wanted)] = {};
    // What a name that goes on in the next piece may have in this one.
    std::size_t overlap = 0;
    for (const std::string& name : wanted) overlap = std::max(overlap, name.size() - 1);
    std::string piece;
    for (std::uint64_t done = 0; done < range.size && !(isFound[0] && isFound[1]);) {
        if (piece.size() > overlap) piece.erase(0, piece.size() - overlap);
        const std::size_t kept = piece.size();
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, range.size - done));
        piece.resize(kept + count);
        if (!Read(range.offset + done, piece.data() + kept, count)) return {TImageKind::NoLibrary};
        done += count;
        for (std::size_t i = 0; i < std::size(wanted); ++i)
            isFound[i] = isFound[i] || piece.find(wanted[i]) != std::string::npos;
    }
    if (isFound[0] && isFound[1]) return {TImageKind::Plugin};
    if (isFound[0] || isFound[1])
        return {TImageKind::OneEntry, isFound[0] ? kCloseEntryName.whole : kInitEntryName.whole};
    if (isFound[2] || isFound[3]) {
        std::string lack = "it has a table, but neither ";
        lack.append(kInitEntryName.whole).append(" nor ").append(kCloseEntryName.whole);
        return {TImageKind::OneEntry, std::move(lack)};
    }
    return {TImageKind::OtherLibrary};
}

TImageLook CImageFile::LackOfBytes(const TRange& range) const {
    const std::uint64_t end =
        range.offset + std::min(range.size, std::numeric_limits<std::uint64_t>::max() - range.offset);
    return {TImageKind::Cut, std::to_string(length_) + " of " + std::to_string(end) + " bytes"};
}

std::optional<TPluginInfoRecord> CImageFile::ReadInfo() const {
    TPluginInfoRecord record;
    const TRange section = FindInfo();
    if (section.size < sizeof(record) || !Read(section.offset, &record, sizeof(record))) return std::nullopt;
    const auto ends = [](const auto& text) {
        return std::find(std::begin(text), std::end(text), '\0') != std::end(text);
    };
    if (std::string_view(record.mark, sizeof(record.mark)) != kPluginInfoMark ||
        record.size < sizeof(record) || record.size > section.size || !ends(record.name) ||
        !ends(record.version) || !ends(record.licence))
        return std::nullopt;
    return record;
}

} // namespace vorlund
