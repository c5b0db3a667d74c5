// A sound file that libsndfile writes.
#pragma once

#include "EncoderOptions.h"
#include "OutputFile.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <memory>
#include <vector>

class CSoundWriter {
public:
    /// Begins a file. Raises `CDataFormatException` when the kind of file cannot have this PCM, and what the
    /// stream raises. The caller keeps the stream alive during each call.
    CSoundWriter(vorlund::IOutputStream& stream, const CEncoderOptions& options,
                 const vorlund::TDataFormat_AudioPcm& format);
    CSoundWriter(const CSoundWriter&) = delete;
    CSoundWriter& operator=(const CSoundWriter&) = delete;
    /// Abandons what is not finished.
    ~CSoundWriter();

    /// Both raise what the stream raises, and `CIOException`; nothing is written any more then. `Finish`
    /// raises `CDataFormatException` for a sound without frames in a kind of file that has none.
    void Write(const std::uint8_t* bytes, std::uint64_t size);
    void Finish();

    /// The bytes of PCM that were written.
    std::int64_t GetLength() const { return length_; }

private:
    struct TAbandoner {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };

    void WriteFrames(const std::uint8_t* bytes, std::size_t frames);
    /// Corrects what libsndfile says of a sound of an odd number of bytes: it counts the byte of padding.
    void MendAiffHead();
    void WriteAt(std::int64_t position, std::uint32_t bigEndian);
    /// Raises when something went wrong since.
    void Check(bool isGood);

    COutputFile output_;
    const TSoundKind& kind_;
    const vorlund::TDataFormat_AudioPcm format_;
    std::unique_ptr<SNDFILE, TAbandoner> file_;
    /// The begin of a frame whose rest has not come, and samples that are aligned for libsndfile.
    std::vector<std::uint8_t> part_;
    std::vector<std::uint32_t> aligned_;
    std::int64_t length_ = 0;
};
