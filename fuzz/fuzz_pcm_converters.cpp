/// \file
/// The PCM converters over a stream of random format, data and behaviour, against a model that follows every
/// call with arithmetic of its own: sizes, positions, samples, and bytes that stay unwritten.
///
/// The input is a script: which converter, its target, the format, what the stream does; then operations; the
/// rest is the data.
#include "WavFuzz.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>

#include <cmath>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

constexpr std::uint8_t kUntouched = 0xA5;

/// The script, zeros behind its end.
class CScript {
public:
    CScript(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    std::uint8_t Byte() { return at_ < size_ ? data_[at_++] : std::uint8_t{0}; }
    std::uint64_t Number(int bytes) {
        std::uint64_t number = 0;
        while (bytes-- > 0) number = number << 8 | Byte();
        return number;
    }
    const std::uint8_t* GetRest() const { return data_ + at_; }
    std::size_t GetRestSize() const { return size_ - at_; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// A source that notes where it was sent.
class CPcmSource : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x2D90E7B4, 0x61C84A1F, 0xB35E7708, 0x49AF1C63};

    TDataFormat_AudioPcm format;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    std::uint64_t position = 0;
    std::uint64_t length = 0;
    std::uint64_t mostPerRead = ~std::uint64_t{0};
    /// What reads claim beyond what they deliver.
    std::uint64_t exaggeration = 0;
    std::uint64_t skipped = 0;

    std::uint64_t GetReadable(std::uint64_t wanted) const {
        return std::min({wanted, mostPerRead, position < size ? size - position : 0});
    }

    std::int64_t GetLength() override { return static_cast<std::int64_t>(length); }
    void Seek(std::int64_t target) override { position = static_cast<std::uint64_t>(target); }
    std::int64_t Tell() override { return static_cast<std::int64_t>(position); }
    bool Eof() override { return position >= size; }
    const TDataFormat& GetFormat() override { return format; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t wanted) override {
        const std::uint64_t count = GetReadable(wanted);
        // All that is asked for is written, so that a claim is never about uninitialised bytes.
        std::memset(buffer, 0, static_cast<std::size_t>(wanted));
        if (count > 0) std::memcpy(buffer, data + position, static_cast<std::size_t>(count));
        position += count;
        return count + exaggeration;
    }
    void Skip(std::uint64_t count) override {
        skipped = count;
        position += count;
    }
};

std::uint32_t SampleSize(std::uint32_t code) {
    return code == 0 ? 1 : code == 1 ? 2 : code < 4 ? 4 : 0;
}

template <class TSample> TSample Load(const std::uint8_t* from) {
    TSample sample;
    std::memcpy(&sample, from, sizeof sample);
    return sample;
}
template <class TSample> void Store(std::uint8_t* to, TSample sample) {
    std::memcpy(to, &sample, sizeof sample);
}

std::int32_t Truncate(double value) {
    value = std::trunc(value);
    return value >= -0x1p31 && value < 0x1p31 ? static_cast<std::int32_t>(value)
                                              : std::numeric_limits<std::int32_t>::min();
}

void ConvertSample(std::uint8_t* to, std::uint32_t toCode, const std::uint8_t* from, std::uint32_t fromCode) {
    if (fromCode == 3) {
        const double s = Load<float>(from);
        if (toCode == 0) Store(to, static_cast<std::uint8_t>(Truncate((s + 1.0) * 127.5)));
        if (toCode == 1) Store(to, static_cast<std::int16_t>(Truncate(s * 32767.0)));
        if (toCode == 2) Store(to, Truncate(s * 214743648.0));
        return;
    }
    // As 32 bits, in which wider is lossless and narrower drops the low bits.
    std::int32_t wide = 0;
    if (fromCode == 0) wide = (from[0] - 128) * (1 << 24);
    if (fromCode == 1) wide = Load<std::int16_t>(from) * (1 << 16);
    if (fromCode == 2) wide = Load<std::int32_t>(from);
    if (toCode == 0) Store(to, static_cast<std::uint8_t>((wide >> 24) + 128));
    if (toCode == 1) Store(to, static_cast<std::int16_t>(wide >> 16));
    if (toCode == 2) Store(to, wide);
    if (toCode == 3) Store(to, static_cast<float>(wide / 2147483648.0));
}

/// The terms of a mix, as numbers of input channels, and their common divisor. 6 means silence.
struct TTerms {
    std::uint32_t divisor;
    std::vector<std::uint32_t> channels;
};

TTerms TermsOf(std::uint32_t inputs, std::uint32_t outputs, std::uint32_t channel) {
    if (inputs == 1) return {1, {0}};
    if (outputs == 1) return inputs == 2 ? TTerms{2, {0, 1}} : TTerms{6, {0, 1, 2, 3, 4, 5}};
    if (inputs == 2) return {1, {channel < 2 ? channel : 6}};
    return channel == 0 ? TTerms{4, {0, 2, 3, 4}} : TTerms{4, {1, 2, 3, 5}};
}

/// True when the bytes at `actual` are one sample of the mix.
bool IsMixed(const std::uint8_t* actual, const std::uint8_t* frame, std::uint32_t code, const TTerms& terms) {
    const std::uint32_t size = SampleSize(code);
    if (terms.divisor == 1) {
        std::uint8_t silence[4] = {};
        if (code == 0) silence[0] = 0x80;
        const std::uint32_t channel = terms.channels[0];
        return std::memcmp(actual, channel == 6 ? silence : frame + channel * size, size) == 0;
    }
    std::int64_t sum = 0;
    double exact = 0;
    bool isFirst = true;
    for (const std::uint32_t channel : terms.channels) {
        const std::uint8_t* const sample = frame + channel * size;
        if (code == 0) sum += *sample / terms.divisor;
        if (code == 1) sum += Load<std::int16_t>(sample) / static_cast<std::int32_t>(terms.divisor);
        if (code == 2) sum += Load<std::int32_t>(sample) / static_cast<std::int32_t>(terms.divisor);
        if (code == 3) {
            const double term = static_cast<double>(Load<float>(sample)) / terms.divisor;
            exact = isFirst ? term : exact + term;
        }
        isFirst = false;
    }
    if (code == 0) return *actual == sum;
    if (code == 1) return Load<std::int16_t>(actual) == sum;
    if (code == 2) return Load<std::int32_t>(actual) == sum;
    const float result = static_cast<float>(exact);
    if (std::isnan(result)) return std::isnan(Load<float>(actual));
    return std::memcmp(actual, &result, sizeof result) == 0;
}

/// What the converter is, and does to byte counts.
struct TModel {
    bool isFormat;
    TDataFormat_AudioPcm input;
    TDataFormat_AudioPcm output;

    bool IsPassThrough() const {
        if (isFormat)
            return input.sampleFormat == output.sampleFormat || input.sampleFormat > 3 ||
                   output.sampleFormat > 3;
        const auto isKnown = [](std::uint32_t count) { return count == 1 || count == 2 || count == 6; };
        return input.channels == output.channels || !isKnown(input.channels) || !isKnown(output.channels) ||
               input.sampleFormat > 3;
    }
    std::uint64_t In() const { return isFormat ? SampleSize(input.sampleFormat) : input.channels; }
    std::uint64_t Out() const { return isFormat ? SampleSize(output.sampleFormat) : output.channels; }
    std::uint64_t ToOutput(std::uint64_t bytes) const { return In() ? bytes * Out() / In() : 0; }
    std::uint64_t ToInput(std::uint64_t bytes) const { return Out() ? bytes * In() / Out() : 0; }
    /// As the rules are written, in 64 bits.
    std::uint64_t Frame() const { return std::uint64_t{SampleSize(output.sampleFormat)} * output.channels; }
    std::uint64_t Wanted(std::uint64_t size) const {
        if (Frame() == 0) return 0;
        // Far beyond the limit already, and still without overflow.
        const std::uint64_t wanted = std::min(size, std::uint64_t{1} << 40) / Frame() * Frame();
        return std::min<std::uint64_t>(isFormat ? wanted / Out() * In() : wanted * In() / Out(), 1024);
    }
    std::uint64_t Produced(std::uint64_t got) const {
        return isFormat ? got / In() * Out() : got * Out() / In();
    }
};

void CheckSamples(const TModel& model, const std::uint8_t* actual, const std::uint8_t* source,
                  std::uint64_t frames) {
    const std::uint32_t inSize = SampleSize(model.input.sampleFormat);
    const std::uint32_t outSize = SampleSize(model.output.sampleFormat);
    for (std::uint64_t frame = 0; frame < frames; ++frame) {
        const std::uint8_t* const in = source + frame * inSize * model.input.channels;
        const std::uint8_t* const out = actual + frame * outSize * model.output.channels;
        for (std::uint32_t channel = 0; channel < model.output.channels; ++channel) {
            if (model.isFormat) {
                std::uint8_t expected[4];
                ConvertSample(expected, model.output.sampleFormat, in + channel * inSize,
                              model.input.sampleFormat);
                Check(std::memcmp(out + channel * outSize, expected, outSize) == 0);
            } else {
                Check(IsMixed(out + channel * outSize, in, model.input.sampleFormat,
                              TermsOf(model.input.channels, model.output.channels, channel)));
            }
        }
    }
}

void CheckRead(IInputStreamFilter& converter, const TModel& model, const CPcmSource& source,
               std::uint64_t size) {
    // A converting read of any size stays within its step; others are kept small here.
    if (model.IsPassThrough()) size %= 5000;
    std::vector<std::uint8_t> buffer(8192, kUntouched);
    const std::uint64_t before = source.position;
    const std::uint64_t wanted = model.IsPassThrough() ? size : model.Wanted(size);
    const std::uint64_t read = wanted > 0 ? source.GetReadable(wanted) : 0;
    const std::uint64_t got = wanted > 0 ? std::min(read + source.exaggeration, wanted) : 0;

    const std::uint64_t count = converter.Read(buffer.data(), size);
    Check(source.position == before + read);
    std::vector<std::uint8_t> input(static_cast<std::size_t>(wanted));
    if (read > 0) std::memcpy(input.data(), source.data + before, static_cast<std::size_t>(read));
    std::uint64_t written = 0;
    if (model.IsPassThrough()) {
        Check(count == got);
        Check(std::equal(input.begin(), input.end(), buffer.begin()));
        written = wanted;
    } else {
        Check(count == (wanted > 0 ? model.Produced(got) : 0) && count <= size);
        const std::uint64_t frames = wanted > 0 ? count / model.Frame() : 0;
        CheckSamples(model, buffer.data(), input.data(), frames);
        written = frames * model.Frame();
    }
    Check(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(written), buffer.end(),
                      [](std::uint8_t byte) { return byte == kUntouched; }));
}

/// A buffer in one step: whole frames, as many as there are.
void CheckFrames(IInputStreamFilter& converter, const TModel& model, const CPcmSource& source,
                 std::uint64_t size) {
    constexpr std::uint64_t kMaxFrame = 8192;
    std::vector<std::uint8_t> buffer(30'000, kUntouched);
    size %= 20'000;
    const std::uint64_t before = source.position;
    const std::uint64_t left = before < source.size ? source.size - before : 0;
    const std::uint64_t count = ReadFrames(converter, buffer.data(), size);
    Check(count <= size);
    std::uint64_t written = size;
    if (!model.IsPassThrough()) {
        const std::uint64_t frame = model.Frame();
        const std::uint64_t inputFrame = frame == 0 ? 0 : model.ToInput(frame);
        const bool isPossible = frame > 0 && frame <= kMaxFrame && inputFrame <= kMaxFrame;
        const std::uint64_t most = isPossible ? size / frame : 0;
        // What a source only claims to deliver, it does not.
        const std::uint64_t frames = isPossible ? std::min(most, left / inputFrame) : 0;
        if (source.exaggeration == 0) {
            Check(count == frames * frame);
            CheckSamples(model, buffer.data(), source.data + std::min(before, source.size), frames);
        } else {
            Check(frame == 0 ? count == 0 : count % frame == 0);
        }
        written = count;
    } else if (source.exaggeration == 0) {
        Check(count == std::min(size, left));
        Check(std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count),
                         source.data + std::min(before, source.size)));
    }
    Check(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(written), buffer.end(),
                      [](std::uint8_t byte) { return byte == kUntouched; }));
}

void CheckFormat(IInputStreamFilter& converter, const TModel& model) {
    Check(std::memcmp(&converter.GetFormat(), &model.output, sizeof model.output) == 0);
}

/// Mostly a number that the converters know.
std::uint32_t SomeChannels(CScript& script) {
    constexpr std::uint32_t kSome[] = {1, 2, 6, 0, 3, 5, 8, 1025, 0x40000001, 0x80000000, 0xFFFFFFFF};
    const std::uint8_t choice = script.Byte();
    return choice < 192 ? kSome[choice % 3] : kSome[choice % std::size(kSome)];
}
std::uint32_t SomeCode(CScript& script) {
    const std::uint8_t choice = script.Byte();
    return choice < 240 ? choice % 4 : choice < 250 ? 4 + choice % 4 : 0xFFFFFFFF;
}
/// Small, around the limits, or anything.
std::uint64_t SomeSize(CScript& script) {
    const std::uint8_t choice = script.Byte();
    if (choice < 128) return script.Number(1);
    return choice < 224 ? script.Number(2) % 8000 : script.Number(8);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    CScript script(data, size);
    TModel model{};
    const std::uint8_t settings = script.Byte();
    model.isFormat = settings & 1;
    model.input.sampleFormat = SomeCode(script);
    model.input.channels = SomeChannels(script);
    model.input.samplesPerSec = static_cast<std::uint32_t>(script.Number(4));
    model.output = model.input;
    const auto filter = CreateAs<IInputStreamFilter>(
        model.isFormat ? classid::CAudioPcmSampleFormatConverter : classid::CAudioPcmChannelNumberConverter);
    const auto format = filter.Query<IAudioPcmSampleFormatConverter>();
    const auto channels = filter.Query<IAudioPcmChannelNumberConverter>();
    const auto setChannels = [&](std::uint32_t count) {
        try {
            channels->SetNumChannels(count);
            Check(count == 1 || count == 2 || count == 6);
            model.output.channels = count;
        } catch (const CInvalidParameterException&) {
            Check(count != 1 && count != 2 && count != 6);
        }
    };
    if (!(settings & 2)) {
        if (model.isFormat) {
            model.output.sampleFormat = SomeCode(script);
            Check(format->SetSampleFormat(model.output.sampleFormat) == format.Get());
        } else {
            setChannels(SomeChannels(script));
        }
    }
    const auto source = CRefPtr<CPcmSource>::Adopt(static_cast<CPcmSource*>(NewObject<CPcmSource>()));
    source->format = model.input;
    if (settings & 4) source->mostPerRead = 1 + script.Byte();
    if (settings & 8) source->exaggeration = SomeSize(script);
    source->length = SomeSize(script);
    std::vector<std::pair<std::uint8_t, std::uint64_t>> operations;
    for (int count = script.Byte() % 32; count > 0; --count) {
        const std::uint8_t operation = script.Byte();
        operations.emplace_back(operation, SomeSize(script));
    }
    source->data = script.GetRest();
    source->size = script.GetRestSize();

    filter->Connect(source.Get());
    // Later changes of the source's format are without effect.
    if (settings & 16) source->format = {3, 6, 1};
    CheckFormat(*filter, model);
    for (const auto& [operation, number] : operations) {
        switch (operation % 8) {
        case 0:
            filter->Seek(static_cast<std::int64_t>(number));
            Check(source->position == model.ToInput(number));
            break;
        case 1:
            filter->Skip(number);
            Check(source->skipped == model.ToInput(number));
            break;
        case 2:
            source->position = number % (source->size + 1);
            break;
        case 3:
            if (!model.isFormat) setChannels(static_cast<std::uint32_t>(number % 8));
            break;
        case 7:
            CheckFrames(*filter, model, *source, number);
            break;
        default:
            CheckRead(*filter, model, *source, number);
        }
        Check(filter->GetLength() == static_cast<std::int64_t>(model.ToOutput(source->length)));
        Check(filter->Tell() == static_cast<std::int64_t>(model.ToOutput(source->position)));
        Check(filter->Eof() == source->Eof());
        CheckFormat(*filter, model);
    }
    return 0;
}
