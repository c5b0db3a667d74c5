// A YUV4MPEG2 file: where its frames are, and their pixels.
#pragma once

#include "Y4mHeader.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <string>
#include <vector>

class CY4mFile {
public:
    /// Raises `CDataFormatException` "Not a YUV4MPEG2 file", "No whole frame" and those of the header, and
    /// what the stream raises. The caller keeps the stream alive during each call.
    explicit CY4mFile(vorlund::IInputStream& stream);

    const vorlund::TDataFormat_VideoRgb& GetFormat() const { return format_; }
    /// Whole frames. Becomes less when the file turns out to have fewer.
    std::int64_t GetFrames() const { return frames_; }

    /// Puts the pixels of a frame, from 0 to `GetFrames() - 1`, to `pixels`, which may have any alignment.
    /// False when it is not there, and for a stream that reads from here inside its own operation. Raises
    /// what the stream raises.
    bool ReadFrame(std::int64_t frame, std::uint8_t* pixels);

private:
    class CBusy;

    bool ReadAt(std::int64_t position, void* buffer, std::uint64_t size);
    /// The line that begins there, without its end. Empty when there is none of at most `kMaxY4mLine` bytes.
    std::string ReadLine(std::int64_t position);
    /// The length of the line that begins the frame there; 0 when none does.
    std::int64_t ReadFrameHead(std::int64_t position);
    void FindFrames();
    void WalkFrames();
    std::int64_t FindFrame(std::int64_t frame);

    vorlund::IInputStream& stream_;
    std::int64_t length_ = 0;
    TY4mHeader header_;
    vorlund::TDataFormat_VideoRgb format_;
    /// Where the first frame begins, and how long the planes of a frame are.
    std::int64_t first_ = 0;
    std::int64_t frameSize_ = 0;
    std::int64_t frames_ = 0;
    /// Whether each frame begins with the same short line. Otherwise, where each of `kMarkStep` begins.
    bool isEven_ = false;
    std::vector<std::int64_t> marks_;
    /// The frame behind the one that was read last, and where it is.
    std::int64_t next_ = 0;
    std::int64_t nextAt_ = 0;
    std::vector<std::uint8_t> planes_;
    bool isBusy_ = false;
};
