// Resampling by libsamplerate.
#include "Engine.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <samplerate.h>

using namespace vorlund;

namespace {

// The second best does not reach what high quality promises.
constexpr int kConverters[] = {SRC_LINEAR, SRC_SINC_FASTEST, SRC_SINC_MEDIUM_QUALITY, SRC_SINC_BEST_QUALITY,
                               SRC_SINC_BEST_QUALITY};

class CSamplerateEngine final : public IEngine {
public:
    explicit CSamplerateEngine(const TResampling& resampling)
        : channels_(resampling.channels), ratio_(double{1} * resampling.outputRate / resampling.inputRate) {
        int error = 0;
        state_.reset(src_new(kConverters[resampling.quality], static_cast<int>(resampling.channels), &error));
        if (!state_ || error) RaiseCannotResample();
    }

    void Process(CBlockBuffer& output, const float* source, std::size_t frames) override {
        while (frames > 0) {
            const std::size_t taken = Call(output, source, frames);
            source += taken * channels_;
            frames -= taken;
        }
    }
    void Finish(CBlockBuffer& output, std::size_t frames) override {
        // Told of the end, it leaves out what silence behind the sound would give.
        const std::size_t whole = output.GetSize() + frames * channels_ * sizeof(float);
        const std::vector<float> silence(kSilentFrames * channels_);
        while (output.GetSize() < whole) Process(output, silence.data(), kSilentFrames);
    }

private:
    struct TDelete {
        void operator()(SRC_STATE* state) const { src_delete(state); }
    };

    std::size_t Call(CBlockBuffer& output, const float* source, std::size_t frames) {
        const std::size_t before = output.GetSize();
        const std::size_t room = static_cast<std::size_t>(static_cast<double>(frames) * ratio_) + kSpare;
        std::byte* const result = output.Append(room * channels_ * sizeof(float));
        SRC_DATA data{};
        data.data_in = source;
        data.input_frames = static_cast<long>(frames);
        data.data_out = reinterpret_cast<float*>(result);
        data.output_frames = static_cast<long>(room);
        data.src_ratio = ratio_;
        const int error = src_process(state_.get(), &data);
        output.Cut(before + static_cast<std::size_t>(data.output_frames_gen) * channels_ * sizeof(float));
        // Nothing taken and nothing made would go on for ever.
        if (error || data.input_frames_used + data.output_frames_gen == 0) RaiseCannotResample();
        return static_cast<std::size_t>(data.input_frames_used);
    }

    static constexpr std::size_t kSpare = 64;
    static constexpr std::size_t kSilentFrames = 128;

    std::unique_ptr<SRC_STATE, TDelete> state_;
    std::size_t channels_;
    double ratio_;
};

} // namespace

CString GetEngineLibrary() {
    // "libsamplerate-0.2.2 (c) ..."
    const std::string_view version = src_get_version();
    const std::string_view name = version.substr(0, version.find(' '));
    return wstring(name.begin(), name.end()).c_str();
}

std::unique_ptr<IEngine> CreateEngine(const TResampling& resampling) {
    return std::make_unique<CSamplerateEngine>(resampling);
}
