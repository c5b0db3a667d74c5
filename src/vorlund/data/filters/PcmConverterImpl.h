// What the PCM converters share.
#pragma once

#include "vorlund/data/base/GuardedFilterImpl.h"
#include "vorlund/data/base/Lending.h"
#include "vorlund/data/filters/FrameFilling.h"
#include "vorlund/data/filters/PcmStep.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectServices.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace vorlund {

/// What a converter raises, in its own name.
struct TPcmConverterFailures : TGuardedFilterFailures {
    TFailure getLengthNotConnected;
    TFailure unsupportedFormat;
};

/// A filter over PCM that the codec class store has decoded. The class around it chooses, in `OnConnected`
/// and whenever its target changes, the ratio of the byte counts and the step of `Read`. `kFailures` is a
/// `TPcmConverterFailures`.
template <class TInterface, const auto& kFailures>
class CPcmConverterImpl : public CGuardedFilterImpl<TInterface, kFailures>, public IFrameInput {
    using TGuard = CGuardedFilterImpl<TInterface, kFailures>;

public:
    std::int64_t GetLength() override {
        IInputStream& stream =
            this->template Connected<COperationNotSupportedException>(kFailures.getLengthNotConnected);
        const pcm::TRatio ratio = ratio_;
        return ToOutput(ratio, stream.GetLength());
    }
    void Flush() override {
        this->template Connected<COperationNotSupportedException>(kFailures.flushNotConnected).Flush();
    }
    void Seek(std::int64_t position) override {
        TGuard::Seek(static_cast<std::int64_t>(ratio_.ToInput(static_cast<std::uint64_t>(position))));
    }
    std::int64_t Tell() override {
        const pcm::TRatio ratio = ratio_;
        return ToOutput(ratio, TGuard::Tell());
    }

    const TDataFormat& GetFormat() override { return format_; }
    using TGuard::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        IInputStream& stream = this->ForRead(buffer);
        // A copy: the stream may change or destroy this converter while it is read.
        const pcm::CStep step = step_;
        // A stream may claim more than it was asked for, here and below.
        if (step.IsPassThrough()) return std::min(stream.Read(buffer, size), size);
        const std::uint32_t wanted = step.GetInputSize(size);
        if (wanted == 0) return 0;
        // What is lent need not go through a buffer. Nothing of this converter is touched behind this call.
        if (lender_) {
            const CLoan loan = lender_->Lend(wanted, wanted);
            if (loan.IsLent()) {
                const std::uint32_t produced =
                    step.GetOutputSize(static_cast<std::uint32_t>(loan.GetCount()));
                step.Convert(buffer, loan.GetBytes(), produced);
                return produced;
            }
            // It has not moved, so it has called nobody who could have ended this converter.
        }
        alignas(32) std::byte scratch[kMaxPcmConverterInput];
        const std::uint64_t got = std::min<std::uint64_t>(stream.Read(scratch, wanted), wanted);
        const std::uint32_t produced = step.GetOutputSize(static_cast<std::uint32_t>(got));
        step.Convert(buffer, scratch, produced);
        return produced;
    }
    std::uint64_t ReadFrames(void* buffer, std::uint64_t size) override {
        IInputStream& stream = this->ForRead(buffer);
        return pcm::CFrameFilling(stream, lender_, calls_, step_).Fill(static_cast<std::byte*>(buffer), size);
    }
    void Skip(std::uint64_t count) override { TGuard::Skip(ratio_.ToInput(count)); }

    void Connect(IInputStream* stream) override {
        const auto next = this->BeginConnect(stream);
        if (!next) return;
        const CFilterCalls::CCall call(calls_);
        auto input = CRefPtr<IInputStream>::Adopt(
            services::CodecClassStore().DecodeStream(next.Get(), TDataFormat_AudioPcm::FormatId));
        const TDataFormat& format = input->GetFormat();
        if (format.id != TDataFormat_AudioPcm::FormatId || format.size != sizeof(TDataFormat_AudioPcm)) {
            input.Reset();
            Raise<CDataFormatException>(kFailures.unsupportedFormat);
        }
        if (!call.IsUnchanged()) return;
        input_ = static_cast<const TDataFormat_AudioPcm&>(format);
        OnConnected();
        lender_ = AsLending(input.Get());
        stream_ = std::move(input);
    }

protected:
    ~CPcmConverterImpl() noexcept(false) = default;

    /// Takes from `input_` what the converter does not change, and sets `ratio_` and `step_`. Does not raise.
    virtual void OnConnected() = 0;

    using TGuard::calls_;
    using TGuard::stream_;

    /// The output.
    TDataFormat_AudioPcm format_{SAMPLE_FORMAT_16BIT, 2, 44100};
    /// The input's when it was connected: a stream that changes its format later must not make a routine read
    /// or write more than its buffers hold.
    TDataFormat_AudioPcm input_;
    pcm::TRatio ratio_;
    pcm::CStep step_;

private:
    /// `stream_`, if it lends; only while there is one.
    ILendingInput* lender_ = nullptr;

    static std::int64_t ToOutput(pcm::TRatio ratio, std::int64_t bytes) {
        return static_cast<std::int64_t>(ratio.ToOutput(static_cast<std::uint64_t>(bytes)));
    }
};

} // namespace vorlund
