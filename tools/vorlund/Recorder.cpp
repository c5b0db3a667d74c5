#include "Recorder.h"

#include "Diagnostics.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

using namespace vorlund;

namespace {

constexpr struct {
    std::string_view bits;
    TSampleFormat input;
    TBufferFormat written;
    TWavSampleFormat file;
} kBits[] = {
    {"8", SAMPLE_FORMAT_8BIT, BUFFER_FORMAT_8BIT, WAV_SAMPLE_8BIT},
    {"16", SAMPLE_FORMAT_16BIT, BUFFER_FORMAT_16BIT, WAV_SAMPLE_16BIT},
    {"24", SAMPLE_FORMAT_32BIT, BUFFER_FORMAT_24BIT, WAV_SAMPLE_24BIT},
    {"32", SAMPLE_FORMAT_32BIT, BUFFER_FORMAT_32BIT, WAV_SAMPLE_32BIT},
    {"float", SAMPLE_FORMAT_FLOAT, BUFFER_FORMAT_FLOAT, WAV_SAMPLE_FLOAT},
};

const auto& FindRow(const std::string& bits) {
    return *std::find_if(std::begin(kBits), std::end(kBits),
                         [&bits](const auto& row) { return row.bits == bits; });
}

/// The sound of a file whose length nobody knows: what the sizes of 32 bits can say, with room for a header.
/// Readers take such a file as one that ends where its pipe does.
constexpr std::uint64_t kEndless = 0xFFFFF000;

} // namespace

TDataFormat_AudioPcm CRecorder::GetInputFormat(const TRecordedFormat& format) {
    return {FindRow(format.bits).input, format.channels, format.rate};
}

CRecorder::CRecorder(const std::string& output, const TRecordedFormat& format,
                     std::optional<std::uint64_t> frames)
    : output_(output), input_(GetInputFormat(format)), written_(FindRow(format.bits).written),
      finder_(input_) {
    const TWavWriterFormat wav(FindRow(format.bits).file, format.channels, format.rate);
    TWavWriterOptions options;
    if (output != "-") {
        try {
            writer_ = std::make_unique<CWavWriter>(PathFromUtf8(output.c_str()).c_str(), wav, options);
        } catch (const CFileAccessException&) {
            // It says more.
            throw;
        } catch (const CIOException&) {
            Fail();
        }
        return;
    }
    stream_ = COutputFile::Create(output, true, {});
    const std::uint64_t block = wav.GetBlockSize();
    options.length = frames ? *frames * block : kEndless / block * block;
    writer_ = std::make_unique<CWavWriter>(stream_->OpenStream().Get(), wav, options);
}

void CRecorder::Write(const void* frames, std::size_t count) {
    const float peak = finder_.Find(frames, count);
    level_ = std::max(level_, peak);
    peak_ = std::max(peak_, peak);
    frames_ += count;
    const void* samples = frames;
    const std::size_t size = count * input_.channels * GetBufferSampleSize(written_);
    if (written_ != input_.sampleFormat) {
        converted_.resize(size);
        ConvertAudio(converted_.data(), frames, count,
                     {.from = input_.sampleFormat, .to = written_, .channels = input_.channels});
        samples = converted_.data();
    }
    try {
        writer_->Write(samples, size);
    } catch (const CIOException&) {
        Fail();
    }
}

void CRecorder::Flush() {
    try {
        writer_->Flush();
    } catch (const CIOException&) {
        Fail();
    }
}

void CRecorder::Finish() {
    try {
        stream_ ? writer_->Finish() : writer_->Close();
    } catch (const CIOException&) {
        if (!stream_) Fail();
        // Less came than the header says, because somebody has ended it. What the system refuses is raised
        // now.
    }
    if (stream_) stream_->Finish();
}

void CRecorder::Fail() const {
    throw TProgramError{VRL_L("Cannot write '") + PathFromUtf8(output_.c_str()) + VRL_L("'")};
}

float CRecorder::TakeLevel() {
    return std::exchange(level_, 0.0F);
}
