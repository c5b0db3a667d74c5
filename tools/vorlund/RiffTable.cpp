#include "RiffTable.h"

#include <vorlund/DecoderSupport.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstdio>
#include <string_view>

using namespace vorlund;

namespace {

constexpr std::uint64_t kHeadSize = 8;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr std::uint16_t kExtensible = 0xFFFE;

// A file of zeros is a file of chunks; so many are read in a second or two.
constexpr std::uint64_t kMaxChunks = 1 << 24;

using TId = std::array<std::uint8_t, 4>;

std::string_view ToText(const TId& id) {
    return {reinterpret_cast<const char*>(id.data()), id.size()};
}

std::string Printed(const TId& id) {
    std::string text;
    for (const std::uint8_t byte : id) {
        if (byte >= ' ' && byte < 0x7F) {
            text += static_cast<char>(byte);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned int>(byte));
            text += escaped;
        }
    }
    return text;
}

bool IsPrintable(const TId& id) {
    return std::all_of(id.begin(), id.end(), [](std::uint8_t byte) { return byte >= ' ' && byte < 0x7F; });
}

class CRiffReader {
public:
    CRiffReader(IInputStream& stream, TRiffTable& table)
        : stream_(stream), table_(table), length_(static_cast<std::uint64_t>(stream.GetLength())) {}

    bool Read() {
        TId form{};
        TId type{};
        stream_.Seek(0);
        std::uint32_t size = 0;
        if (!ReadId(form)) return false;
        isBig_ = ToText(form) == "RIFX";
        is64_ = ToText(form) == "RF64" || ToText(form) == "BW64";
        if (!isBig_ && !is64_ && ToText(form) != "RIFF") return false;
        if (!ReadNumber(size) || !ReadId(type)) return false;
        table_.form = ToText(form);
        table_.type = Printed(type);
        table_.foundSize = length_;
        table_.declaredSize = size + kHeadSize;
        isSizeKnown_ = size != kUnknownSize;
        ReadChunks();
        CompareSizes();
        return true;
    }

private:
    bool ReadId(TId& id) { return ReadWhole(stream_, id.data(), id.size()); }
    bool ReadNumber(std::uint32_t& number) {
        std::uint8_t bytes[4];
        if (!ReadWhole(stream_, bytes, sizeof bytes)) return false;
        if (isBig_) std::reverse(bytes, bytes + 4);
        number = LoadLittleEndian32(bytes);
        return true;
    }
    void Warn(const std::string& text) { table_.warnings.push_back(text); }

    void ReadChunks() {
        // Chunks without data follow each other without a seek.
        std::uint64_t at = 12;
        std::uint64_t place = at;
        while (at < length_) {
            if (table_.chunks == kMaxChunks) {
                Warn("There are more than " + std::to_string(kMaxChunks) +
                     " chunks; the others are not looked at");
                return;
            }
            if (place != at) stream_.Seek(static_cast<std::int64_t>(at));
            TId id{};
            std::uint32_t size = 0;
            if (!ReadId(id) || !ReadNumber(size)) {
                WarnOfRest(at);
                return;
            }
            if (IsBehind(at) && !IsPrintable(id)) {
                // Of a recorder that never came to write its sizes.
                if (table_.declaredSound && *table_.declaredSound == 0 && isSoundLast_)
                    table_.foundSound = length_ - at;
                else
                    WarnOfRest(at);
                return;
            }
            const std::uint64_t data = at + kHeadSize;
            const std::uint64_t whole = GetSize(id, size);
            place = data;
            isSoundLast_ = ToText(id) == "data";
            Note(id, data, whole);
            if (ReadKnown(id, data, whole)) place = 0;
            if (ToText(id) == "data" && size == kUnknownSize && !sound64_) {
                // Of a stream whose length nobody knew.
                table_.foundSound = length_ - data;
                return;
            }
            if (whole > length_ - data) {
                isCut_ = true;
                Warn("The chunk \"" + Printed(id) + "\" ends at byte " + std::to_string(length_) +
                     " instead of " +
                     (whole > ~std::uint64_t{0} - data ? std::string("beyond any file")
                                                       : std::to_string(data + whole)));
                return;
            }
            at = data + whole;
            if (whole % 2 != 0) at = SkipPadding(at, id);
        }
    }

    void WarnOfRest(std::uint64_t at) {
        Warn(std::to_string(length_ - at) + " bytes behind the last chunk are no chunk");
    }

    /// Whether the file has ended there, as far as its head knows.
    bool IsBehind(std::uint64_t at) const { return !isSizeKnown_ || at >= table_.declaredSize; }

    /// The size of 64 bits, where there is one.
    std::uint64_t GetSize(const TId& id, std::uint32_t size) const {
        return is64_ && size == kUnknownSize && ToText(id) == "data" && sound64_ ? *sound64_ : size;
    }

    /// Odd chunks have a byte of padding; some writers leave it out.
    std::uint64_t SkipPadding(std::uint64_t at, const TId& id) {
        if (at + 1 + kHeadSize > length_) return at + 1;
        TId next{};
        stream_.Seek(static_cast<std::int64_t>(at));
        std::uint8_t padding = 0;
        if (!ReadWhole(stream_, &padding, 1) || !ReadId(next)) return at + 1;
        if (padding == 0 || IsPrintable(next)) return at + 1;
        Warn("No padding behind the chunk \"" + Printed(id) + "\" of odd size");
        return at;
    }

    void Note(const TId& id, std::uint64_t data, std::uint64_t size) {
        ++table_.chunks;
        if (isLastKept_ && id == lastId_ && size == lastSize_) {
            ++table_.rows.back().count;
            return;
        }
        isLastKept_ = table_.rows.size() < kMaxRiffRows;
        if (!isLastKept_) return;
        lastId_ = id;
        lastSize_ = size;
        TRiffRow row{.name = Printed(id), .offset = data, .size = size};
        for (const TRiffRow& other : table_.rows) {
            if (other.name == row.name) row.number += other.count;
        }
        table_.rows.push_back(std::move(row));
    }

    /// Whether the stream was moved.
    bool ReadKnown(const TId& id, std::uint64_t data, std::uint64_t size) {
        const std::string_view name = ToText(id);
        const std::uint64_t found = std::min(size, length_ - data);
        if (name == "data" && !table_.declaredSound) {
            table_.declaredSound = size;
            table_.foundSound = found;
            return false;
        }
        if (name == "fmt " && !table_.format) {
            ReadFormat(found);
            return true;
        }
        if (name == "ds64" && is64_ && !sound64_) {
            ReadSizes(found);
            return true;
        }
        return false;
    }

    void ReadFormat(std::uint64_t size) {
        std::array<std::uint8_t, 40> bytes{};
        if (size < 16 || !ReadWhole(stream_, bytes.data(), std::min<std::uint64_t>(size, bytes.size()))) {
            Warn("The chunk \"fmt \" is too short");
            return;
        }
        const auto two = [&](std::size_t i) {
            return static_cast<std::uint16_t>(isBig_ ? bytes[i] << 8 | bytes[i + 1]
                                                     : bytes[i + 1] << 8 | bytes[i]);
        };
        const auto four = [&](std::size_t i) {
            return isBig_ ? static_cast<std::uint32_t>(two(i)) << 16 | two(i + 2)
                          : static_cast<std::uint32_t>(two(i + 2)) << 16 | two(i);
        };
        TRiffFormat format{.tag = two(0),
                           .channels = two(2),
                           .samplesPerSec = four(4),
                           .blockSize = two(12),
                           .bits = two(14)};
        format.validBits = format.bits;
        if (format.tag == kExtensible && size >= bytes.size()) {
            format.isExtensible = true;
            format.validBits = two(18);
            format.channelMask = four(20);
            format.tag = two(24);
        }
        table_.format = format;
    }

    void ReadSizes(std::uint64_t size) {
        std::array<std::uint8_t, 16> bytes{};
        if (size < bytes.size() || !ReadWhole(stream_, bytes.data(), bytes.size())) {
            Warn("The chunk \"ds64\" is too short");
            return;
        }
        const auto eight = [&](std::size_t i) {
            return std::uint64_t{LoadLittleEndian32(&bytes[i + 4])} << 32 | LoadLittleEndian32(&bytes[i]);
        };
        table_.declaredSize = eight(0) + kHeadSize;
        isSizeKnown_ = true;
        sound64_ = eight(8);
    }

    void CompareSizes() {
        if (table_.type == "WAVE" && !table_.format) Warn("There is no chunk \"fmt \"");
        if (table_.type == "WAVE" && !table_.declaredSound) Warn("There is no chunk \"data\"");
        if (table_.declaredSound && *table_.declaredSound == 0 && table_.rows.back().name == "data" &&
            table_.foundSize > table_.rows.back().offset)
            Warn("The chunk \"data\" declares no bytes");
        // A chunk that is cut tells the same.
        if (isCut_ || !isSizeKnown_ || table_.declaredSize == table_.foundSize) return;
        // A last byte of padding that is left out, or not counted, is usual.
        const std::uint64_t difference = table_.declaredSize > table_.foundSize
                                             ? table_.declaredSize - table_.foundSize
                                             : table_.foundSize - table_.declaredSize;
        if (difference == 1 && std::max(table_.declaredSize, table_.foundSize) % 2 == 0) return;
        Warn("The head declares " + std::to_string(table_.declaredSize) + " bytes, the file has " +
             std::to_string(table_.foundSize));
    }

    IInputStream& stream_;
    TRiffTable& table_;
    const std::uint64_t length_;
    bool isBig_ = false;
    bool is64_ = false;
    bool isSizeKnown_ = false;
    std::optional<std::uint64_t> sound64_;
    TId lastId_{};
    std::uint64_t lastSize_ = 0;
    bool isLastKept_ = false;
    bool isCut_ = false;
    bool isSoundLast_ = false;
};

} // namespace

std::optional<TRiffTable> ReadRiffTable(IInputStream& stream) {
    TRiffTable table;
    if (!CRiffReader(stream, table).Read()) return {};
    return table;
}
