/// \file
/// The base of filters that turn PCM audio into other PCM audio block by block, for the library's own and for
/// those of plug-ins: derive from `CPcmFilterImpl<Interface>`.
#pragma once

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/StreamFilterImpl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace vorlund {

/// Bytes that are made one block behind the other. Unlike a vector it does not clear what is about to be
/// written. Since version 0.1.
class CBlockBuffer {
public:
    std::size_t GetSize() const { return size_; }
    const std::byte* GetData() const { return bytes_.get(); }

    /// Appends `count` bytes, to be written by the caller: aligned for numbers when all that was appended
    /// are. Raises `std::bad_alloc`.
    std::byte* Append(std::size_t count) {
        if (count > capacity_ - size_) {
            const std::size_t capacity = std::max(size_ + count, 2 * capacity_);
            auto bytes = std::make_unique_for_overwrite<std::byte[]>(capacity);
            if (size_ > 0) std::memcpy(bytes.get(), bytes_.get(), size_);
            bytes_ = std::move(bytes);
            capacity_ = capacity;
        }
        size_ += count;
        return bytes_.get() + (size_ - count);
    }
    /// Drops what is behind the first `size` bytes, which are there.
    void Cut(std::size_t size) { size_ = size; }

private:
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

/// A filter over what the codec class store makes of the connected stream. It delivers any number of bytes,
/// also parts of frames, and the same bytes however they are asked for and however the source delivers: what
/// the class around it gets are whole frames, in blocks of one size up to the last. Of a source that ends
/// inside a frame the part is left out.
///
/// `Connect` goes to the beginning of a source that has positions. Positions and lengths are bytes of the
/// result; behind the end is the end. One thread at a time. The source may use the filter from inside its
/// operations; a `Read` there delivers nothing. Since version 0.1.
template <class TInterface> class CPcmFilterImpl : public CInputFilterImpl<TInterface> {
    using TLayer = CInputFilterImpl<TInterface>;

public:
    using TLayer::Read;

    /// Raises what the search for decoders and the class around it raise; the filter is then unconnected.
    void Connect(IInputStream* stream) override {
        const auto next = this->BeginConnect(stream);
        if (!next) return;
        const CFilterCalls::CCall call(this->calls_);
        auto input = CRefPtr<IInputStream>::Adopt(
            services::CodecClassStore().DecodeStream(next.Get(), TDataFormat_AudioPcm::FormatId));
        constexpr std::uint32_t kPositions = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
        if ((input->GetCapabilities() & kPositions) == kPositions && input->Tell() != 0) input->Seek(0);
        const TDataFormat& format = input->GetFormat();
        const bool isPcm = format.id == TDataFormat_AudioPcm::FormatId && format.size == sizeof(input_);
        if (!call.IsUnchanged()) return;
        // No format without samples has channels.
        input_ = isPcm ? static_cast<const TDataFormat_AudioPcm&>(format) : TDataFormat_AudioPcm(~0U, 0, 0);
        BeginSource();
        held_ = std::make_shared<std::vector<std::byte>>(std::size_t{kBlockFrames} * input_.GetBlockSize());
        Restart();
        position_ = 0;
        stream_ = std::move(input);
    }

    std::int64_t GetLength() override {
        if (!stream_) return TLayer::GetLength();
        const auto source = CRefPtr<IInputStream>::Share(stream_.Get());
        const CFilterCalls::CCall call(this->calls_);
        const std::int64_t length = source->GetLength();
        if (!call.IsUnchanged()) return 0;
        const auto frames = static_cast<std::uint64_t>(std::max<std::int64_t>(length, 0)) / GetInputFrame();
        return static_cast<std::int64_t>(GetOutputFrames(frames) * format_.GetBlockSize());
    }
    std::int64_t Tell() override { return stream_ ? position_ : TLayer::Tell(); }
    bool Eof() override {
        if (!stream_) return true;
        if (taken_ < made_.GetSize()) return false;
        return isAtEnd_ || (!isBusy_ && !Fill());
    }
    const TDataFormat& GetFormat() override { return format_; }

    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer || !stream_) return TLayer::Read(buffer, size);
        return Take(static_cast<std::byte*>(buffer), size);
    }
    /// Whatever lies between is made and dropped.
    void Skip(std::uint64_t count) override {
        if (stream_) Take(nullptr, count);
    }

protected:
    ~CPcmFilterImpl() noexcept(false) = default;

    static constexpr std::uint32_t kBlockFrames = 4096;
    static constexpr std::uint32_t kMaxChannels = 1024;

    /// Whether the source is PCM with samples of a known format, 1 to `kMaxChannels` channels and a rate.
    static bool IsPossible(const TDataFormat_AudioPcm& format) {
        return format.sampleFormat <= SAMPLE_FORMAT_FLOAT && format.channels > 0 &&
               format.channels <= kMaxChannels && format.samplesPerSec > 0;
    }

    /// `input_` is the format of another source: sets `format_`, or raises, as it must where `IsPossible` is
    /// false.
    virtual void BeginSource() = 0;
    /// The next block is that at `frame` of the source.
    virtual void BeginAt(std::uint64_t frame) = 0;
    /// How many frames the result has for so many of the source.
    virtual std::uint64_t GetOutputFrames(std::uint64_t frames) = 0;
    /// Appends to `output` what a block makes. The last one, which may be empty, has fewer frames than the
    /// others.
    virtual void Make(CBlockBuffer& output, const std::byte* block, std::size_t frames, bool isLast) = 0;

    /// Forgets what is made; the next block is that at `frame` of the source.
    void Restart(std::uint64_t frame = 0) {
        this->calls_.NoteChange();
        made_.Cut(0);
        taken_ = 0;
        heldBytes_ = 0;
        isAtEnd_ = false;
        BeginAt(frame);
    }
    /// The same, after seeking the source there; false when that has changed the connection.
    bool RestartAt(std::uint64_t frame) {
        const auto source = CRefPtr<IInputStream>::Share(stream_.Get());
        const CFilterCalls::CCall call(this->calls_);
        source->Seek(static_cast<std::int64_t>(frame * GetInputFrame()));
        if (!call.IsUnchanged()) return false;
        Restart(frame);
        return true;
    }
    /// Moves on by `count` bytes, or to the end.
    std::uint64_t Take(std::byte* buffer, std::uint64_t size) {
        // The source may release the last reference to this filter.
        const auto self = CRefPtr<IInputStream>::Share(this);
        std::uint64_t done = 0;
        while (done < size) {
            if (taken_ == made_.GetSize() && (isBusy_ || !Fill())) break;
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(size - done, made_.GetSize() - taken_));
            if (buffer) std::memcpy(buffer + done, made_.GetData() + taken_, count);
            taken_ += count;
            done += count;
            position_ += static_cast<std::int64_t>(count);
        }
        return done;
    }
    std::uint32_t GetInputFrame() const { return std::max(input_.GetBlockSize(), 1U); }

    using TLayer::stream_;

    /// Of the result.
    TDataFormat_AudioPcm format_;
    /// Of the source when it was connected.
    TDataFormat_AudioPcm input_;
    std::int64_t position_ = 0;

private:
    /// Makes what comes next; false at the end, and when the source has changed the connection.
    bool Fill() {
        const auto self = CRefPtr<IInputStream>::Share(this);
        made_.Cut(0);
        taken_ = 0;
        while (made_.GetSize() == 0 && !isAtEnd_)
            if (!FillBlock()) return false;
        return made_.GetSize() > 0;
    }
    bool FillBlock() {
        if (!stream_) return false;
        const TBusy busy(isBusy_);
        const auto source = CRefPtr<IInputStream>::Share(stream_.Get());
        // The source may connect the filter to another one while it writes here.
        const auto held = held_;
        while (heldBytes_ < held->size()) {
            const CFilterCalls::CCall call(this->calls_);
            const std::size_t room = held->size() - heldBytes_;
            const std::uint64_t told = source->Read(held->data() + heldBytes_, room);
            const auto got = static_cast<std::size_t>(std::min<std::uint64_t>(told, room));
            if (!call.IsUnchanged()) return false;
            heldBytes_ += got;
            if (got == 0) {
                isAtEnd_ = true;
                break;
            }
        }
        Make(made_, held->data(), heldBytes_ / GetInputFrame(), isAtEnd_);
        heldBytes_ = 0;
        return true;
    }

    struct TBusy {
        explicit TBusy(bool& flag) : isBusy(flag) { isBusy = true; }
        TBusy(const TBusy&) = delete;
        TBusy& operator=(const TBusy&) = delete;
        ~TBusy() { isBusy = false; }
        bool& isBusy;
    };

    /// Of the source, not made yet.
    std::shared_ptr<std::vector<std::byte>> held_;
    std::size_t heldBytes_ = 0;
    CBlockBuffer made_;
    std::size_t taken_ = 0;
    bool isAtEnd_ = false;
    bool isBusy_ = false;
};

} // namespace vorlund
