// What an application and the process of its isolated decoders say to each other: messages of a kind and a
// size, each with numbers, texts and bytes in a fixed order. Both are of one machine and one version, so
// numbers have its order of bytes. The application asks; while the process works on the answer, it may ask
// for bytes of the source, any number of times.
//
// The process is started with the number of its end of the channel, "--decode", its limit of memory in MiB
// and the folders of plug-ins.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

namespace vorlund::isolation {

enum class TKind : std::uint32_t {
    // Of the application.
    Open = 1, ///< CId of the wanted format, u32 capabilities and i64 length of the source
    Read,     ///< i64 position, u32 count
    Source,   ///< the bytes that were asked for, fewer before the end of the source, none there
    // Of the process.
    Unsafe,     ///< the system keeps nothing from it, so it does nothing
    SourceRead, ///< i64 position, u32 count
    Trying,     ///< CId and name of the candidate that comes next
    Entry,      ///< a `TDecodeEntry`, in the order of its fields
    Found,      ///< u32 capabilities, i64 length or -1, the names of the chain as one text, the format
    NotFound,   ///< the search is over
    Data,       ///< i64 length or -1; the bytes, at most as many as were asked for, none at the end
    Failed,     ///< what was raised: i32 type, reason
};

struct THeader {
    std::uint32_t mark;
    TKind kind;
    std::uint32_t size;
};

constexpr std::uint32_t kMark = 0x4E494C56;
/// The most bytes that are asked for at once.
constexpr std::uint32_t kMaxBlock = 64 * 1024;
constexpr std::uint32_t kMaxMessage = 2 * kMaxBlock;
/// The most units of a text, which is cut there.
constexpr std::uint32_t kMaxText = 4096;
/// What a stream without a length has.
constexpr std::int64_t kNoLength = -1;

/// A message that is being written.
class CMessage {
public:
    explicit CMessage(TKind kind) : kind_(kind) {
        // Most messages are no longer.
        bytes_.reserve(64);
        bytes_.resize(sizeof(THeader));
    }

    template <class TValue> CMessage& Put(const TValue& value) {
        static_assert(std::is_trivially_copyable_v<TValue> && !std::is_pointer_v<TValue>);
        return PutBytes(&value, sizeof(value));
    }
    CMessage& PutText(const wchar* text) {
        std::uint32_t length = 0;
        while (length < kMaxText && text[length]) ++length;
        Put(length);
        return PutBytes(text, length * sizeof(wchar));
    }
    CMessage& PutBytes(const void* bytes, std::size_t size) {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        bytes_.insert(bytes_.end(), first, first + size);
        return *this;
    }

    /// The whole of it, with its head.
    std::span<const std::uint8_t> Finish() {
        const THeader header{kMark, kind_, static_cast<std::uint32_t>(bytes_.size() - sizeof(THeader))};
        std::memcpy(bytes_.data(), &header, sizeof(header));
        return bytes_;
    }

private:
    std::vector<std::uint8_t> bytes_;
    TKind kind_;
};

/// A message that has come, whose content is believed piece by piece. After the first piece that is not
/// there, all others are empty.
class CReceived {
public:
    explicit CReceived(TKind kind, std::span<const std::uint8_t> content) : kind_(kind), rest_(content) {}

    TKind GetKind() const { return kind_; }
    /// Whether all pieces were there, and no others.
    bool IsWhole() const { return isGood_ && rest_.empty(); }

    template <class TValue> TValue Get() {
        static_assert(std::is_trivially_copyable_v<TValue>);
        TValue value{};
        const std::span<const std::uint8_t> bytes = Take(sizeof(value));
        if (isGood_) std::memcpy(static_cast<void*>(&value), bytes.data(), sizeof(value));
        return value;
    }
    wstring GetText() {
        const auto length = Get<std::uint32_t>();
        if (length > kMaxText) isGood_ = false;
        const std::span<const std::uint8_t> bytes = Take(length * sizeof(wchar));
        wstring text(bytes.size() / sizeof(wchar), 0);
        if (!bytes.empty()) std::memcpy(text.data(), bytes.data(), bytes.size());
        return text;
    }
    /// Whatever follows.
    std::span<const std::uint8_t> GetRest() { return Take(rest_.size()); }

private:
    std::span<const std::uint8_t> Take(std::size_t size) {
        if (!isGood_ || size > rest_.size()) {
            isGood_ = false;
            return {};
        }
        const std::span<const std::uint8_t> taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }

    TKind kind_;
    std::span<const std::uint8_t> rest_;
    bool isGood_ = true;
};

} // namespace vorlund::isolation
