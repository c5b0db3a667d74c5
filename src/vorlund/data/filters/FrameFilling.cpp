#include "vorlund/data/filters/FrameFilling.h"

#include "vorlund/data/filters/AudioPcmChannelNumberConverter.h"
#include "vorlund/data/filters/AudioPcmSampleFormatConverter.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/DecoderSupport.h>

#include <algorithm>
#include <typeinfo>

namespace vorlund {
namespace pcm {
namespace {

/// What is taken at a time: a source keeps its lock meanwhile, and the cache what is copied.
constexpr std::uint32_t kMaxLoan = 64 * 1024;
constexpr std::uint32_t kScratch = 8 * 1024;

} // namespace

std::uint64_t CFrameFilling::Fill(std::byte* buffer, std::uint64_t size) {
    if (step_.IsPassThrough()) {
        done_ = ReadSource(buffer, size);
        return done_;
    }
    const std::uint32_t outputFrame = step_.GetOutputFrame();
    const std::uint32_t inputFrame = step_.GetInputFrame();
    // Not even one frame fits the scratch of a step: these are no sounds.
    if (outputFrame == 0 || inputFrame > kScratch) return 0;
    while (call_.IsUnchanged()) {
        const std::uint64_t frames = (size - done_) / outputFrame;
        if (frames == 0) break;
        if (lender_ ? !FillLent(buffer, frames) : !FillRead(buffer, frames)) break;
    }
    return done_;
}

/// Converts what is lent where it is; false at the end.
bool CFrameFilling::FillLent(std::byte* buffer, std::uint64_t frames) {
    const std::uint32_t inputFrame = step_.GetInputFrame();
    const std::uint64_t wanted = std::min<std::uint64_t>(frames, kMaxLoan / inputFrame) * inputFrame;
    const CLoan loan = lender_->Lend(wanted, inputFrame);
    if (!loan.IsLent()) return FillRead(buffer, frames);
    const std::uint64_t got = std::min(loan.GetCount(), wanted) / inputFrame;
    if (got == 0) return false;
    step_.ConvertFrames(buffer + done_, loan.GetBytes(), static_cast<std::size_t>(got));
    done_ += got * step_.GetOutputFrame();
    return true;
}

/// The same through a copy.
bool CFrameFilling::FillRead(std::byte* buffer, std::uint64_t frames) {
    alignas(32) std::byte scratch[kScratch];
    const std::uint32_t inputFrame = step_.GetInputFrame();
    const std::uint64_t wanted = std::min<std::uint64_t>(frames, kScratch / inputFrame) * inputFrame;
    const std::uint64_t got = ReadSource(scratch, wanted) / inputFrame;
    if (got == 0) return false;
    step_.ConvertFrames(buffer + done_, scratch, static_cast<std::size_t>(got));
    done_ += got * step_.GetOutputFrame();
    return got * inputFrame == wanted;
}

/// Less only at the end, and when the stream has changed the converter.
std::uint64_t CFrameFilling::ReadSource(std::byte* bytes, std::uint64_t size) {
    std::uint64_t filled = 0;
    while (filled < size && call_.IsUnchanged()) {
        const std::uint64_t wanted = size - filled;
        const std::uint64_t count = std::min(stream_->Read(bytes + filled, wanted), wanted);
        if (count == 0) break;
        filled += count;
    }
    return filled;
}

} // namespace pcm

namespace {

/// The stream as an object of `TClass`, if it is one of the class store.
template <class TClass> IFrameInput* AsFramesOf(IInputStream& stream) {
    using TObject = CFinalObject<TClass>;
    return &typeid(stream) == &typeid(TObject) ? static_cast<TObject*>(&stream) : nullptr;
}

/// The stream if it fills buffers, else null. A dynamic cast takes longer than the rest of a small call, so
/// the usual ones are recognised first.
IFrameInput* AsFrames(IInputStream& stream) {
    if (auto* const samples = AsFramesOf<CAudioPcmSampleFormatConverter>(stream)) return samples;
    if (auto* const channels = AsFramesOf<CAudioPcmChannelNumberConverter>(stream)) return channels;
    return dynamic_cast<IFrameInput*>(&stream);
}

} // namespace

std::uint64_t ReadFrames(IInputStream& stream, void* buffer, std::uint64_t size) {
    if (auto* const frames = AsFrames(stream)) return frames->ReadFrames(buffer, size);
    const auto held = CRefPtr<IInputStream>::Share(&stream);
    auto* const bytes = static_cast<std::byte*>(buffer);
    std::uint64_t filled = 0;
    do {
        const std::uint64_t wanted = size - filled;
        const std::uint64_t count = std::min(stream.Read(bytes + filled, wanted), wanted);
        if (count == 0) break;
        filled += count;
    } while (filled < size);
    return filled;
}

} // namespace vorlund
