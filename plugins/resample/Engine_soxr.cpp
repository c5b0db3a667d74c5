// Resampling by libsoxr.
#include "Engine.h"
#include "SoxrLibrary.h"

using namespace vorlund;

namespace {

constexpr unsigned long kRecipes[] = {SOXR_QQ, SOXR_LQ, SOXR_MQ, SOXR_HQ, SOXR_VHQ};

class CSoxrEngine final : public IEngine {
public:
    explicit CSoxrEngine(const TResampling& resampling)
        : channels_(resampling.channels), ratio_(double{1} * resampling.outputRate / resampling.inputRate) {
        if (!library_) RaiseCannotResample();
        const soxr_quality_spec_t quality =
            library_->qualitySpec(kRecipes[resampling.quality], SOXR_HI_PREC_CLOCK);
        const soxr_runtime_spec_t runtime = library_->runtimeSpec(1);
        soxr_error_t error = nullptr;
        soxr_ = {library_->create(resampling.inputRate, resampling.outputRate, resampling.channels, &error,
                                  nullptr, &quality, &runtime),
                 library_->destroy};
        if (!soxr_ || error) RaiseCannotResample();
    }

    void Process(CBlockBuffer& output, const float* source, std::size_t frames) override {
        while (frames > 0) {
            const std::size_t taken = Call(output, source, frames);
            source += taken * channels_;
            frames -= taken;
        }
    }
    void Finish(CBlockBuffer& output, std::size_t) override {
        std::size_t before = 0;
        do {
            before = output.GetSize();
            Call(output, nullptr, 0);
        } while (output.GetSize() > before);
    }

private:
    std::size_t Call(CBlockBuffer& output, const float* source, std::size_t frames) {
        const std::size_t before = output.GetSize();
        const std::size_t room = static_cast<std::size_t>(static_cast<double>(frames) * ratio_) + kSpare;
        std::byte* const result = output.Append(room * channels_ * sizeof(float));
        std::size_t taken = 0;
        std::size_t made = 0;
        const soxr_error_t error =
            library_->process(soxr_.get(), source, frames, &taken, result, room, &made);
        output.Cut(before + made * channels_ * sizeof(float));
        // Nothing taken and nothing made would go on for ever.
        if (error || (source && taken + made == 0)) RaiseCannotResample();
        return taken;
    }

    /// What finds no room comes with the next call.
    static constexpr std::size_t kSpare = 64;

    const TSoxrLibrary* library_ = FindSoxrLibrary();
    std::unique_ptr<soxr, void (*)(soxr_t)> soxr_{nullptr, nullptr};
    std::size_t channels_;
    double ratio_;
};

} // namespace

CString GetEngineLibrary() {
    return "libsoxr-" SOXR_THIS_VERSION_STR;
}

std::unique_ptr<IEngine> CreateEngine(const TResampling& resampling) {
    return std::make_unique<CSoxrEngine>(resampling);
}
