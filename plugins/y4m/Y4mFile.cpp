#include "Y4mFile.h"

#include "Y4mColours.h"

#include "../support/PixelForm.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <string_view>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/y4m/Y4mFile");
constexpr const wchar* kConnect = VRL_L("CY4mDecoder::Connect");
constexpr TFailure kUnknown{kConnect, kFile, 1, VRL_L("Not a YUV4MPEG2 file")};
constexpr TFailure kNoEnd{kConnect, kFile, 2, VRL_L("Endless YUV4MPEG2 header")};
constexpr TFailure kNoFrame{kConnect, kFile, 3, VRL_L("No whole frame")};

constexpr std::string_view kFrame = "FRAME";
/// The line of a frame without parameters, with its end.
constexpr std::int64_t kShortHead = 6;

constexpr std::int64_t kMarkStep = 64;

/// Of a file; the pixels of its frames are then counted in 63 bits.
constexpr std::int64_t kMaxLength = std::int64_t{1} << 60;

} // namespace

/// Marks a file as being read, for the length of a block.
class CY4mFile::CBusy {
public:
    explicit CBusy(bool& isBusy) : isBusy_(isBusy) { isBusy_ = true; }
    CBusy(const CBusy&) = delete;
    CBusy& operator=(const CBusy&) = delete;
    ~CBusy() { isBusy_ = false; }

private:
    bool& isBusy_;
};

CY4mFile::CY4mFile(IInputStream& stream)
    : stream_(stream), length_(std::clamp<std::int64_t>(stream.GetLength(), 0, kMaxLength)) {
    char signature[kY4mSignature.size()];
    if (!ReadAt(0, signature, sizeof signature) ||
        std::string_view(signature, sizeof signature) != kY4mSignature)
        Raise<CDataFormatException>(kUnknown);
    NoteContainer(VRL_L("YUV4MPEG2"));
    const std::string line = ReadLine(0);
    if (line.empty()) Raise<CDataFormatException>(kNoEnd);
    header_ = ParseY4mHeader(line);
    first_ = static_cast<std::int64_t>(line.size()) + 1;
    frameSize_ = static_cast<std::int64_t>(header_.GetFrameSize());
    FindFrames();
    if (frames_ == 0) Raise<CDataFormatException>(kNoFrame);
    if (header_.isInterlaced) NoteRemark(VRL_L("interlaced, frames are delivered as they are"));
    // There is a frame of this size in the file.
    planes_.resize(static_cast<std::size_t>(frameSize_));
    format_.image.pixelFormat = kPixelForm;
    format_.frameRate = header_.frameRate;
    format_.image.width = header_.width;
    format_.image.height = header_.height;
}

bool CY4mFile::ReadAt(std::int64_t position, void* buffer, std::uint64_t size) {
    if (stream_.Tell() != position) stream_.Seek(position);
    return ReadWhole(stream_, buffer, size);
}

std::string CY4mFile::ReadLine(std::int64_t position) {
    std::string line(static_cast<std::size_t>(std::clamp<std::int64_t>(length_ - position, 0, kMaxY4mLine)),
                     '\0');
    if (!ReadAt(position, line.data(), line.size())) return {};
    const std::size_t end = line.find('\n');
    return end == std::string::npos ? std::string() : line.substr(0, end);
}

std::int64_t CY4mFile::ReadFrameHead(std::int64_t position) {
    char head[kShortHead];
    if (length_ - position < kShortHead || !ReadAt(position, head, sizeof head) ||
        std::string_view(head, kFrame.size()) != kFrame)
        return 0;
    if (head[kFrame.size()] == '\n') return kShortHead;
    if (head[kFrame.size()] != ' ') return 0;
    const std::string line = ReadLine(position);
    return line.empty() ? 0 : static_cast<std::int64_t>(line.size()) + 1;
}

void CY4mFile::FindFrames() {
    const std::int64_t stride = kShortHead + frameSize_;
    frames_ = std::max<std::int64_t>(length_ - first_, 0) / stride;
    // Looking at the first and the last is enough: each is looked at again when it is read.
    isEven_ = frames_ > 0 && ReadFrameHead(first_) == kShortHead &&
              ReadFrameHead(first_ + (frames_ - 1) * stride) == kShortHead;
    if (!isEven_) return WalkFrames();
    if (first_ + frames_ * stride != length_) NoteRemark(VRL_L("ends inside a frame"));
}

void CY4mFile::WalkFrames() {
    isEven_ = false;
    frames_ = 0;
    marks_.clear();
    std::int64_t position = first_;
    while (const std::int64_t head = ReadFrameHead(position)) {
        if (length_ - position - head < frameSize_) break;
        if (frames_ % kMarkStep == 0) marks_.push_back(position);
        ++frames_;
        position += head + frameSize_;
    }
    if (position < length_) NoteRemark(VRL_L("ends inside a frame, or has something else in it"));
}

/// The frame is one of those that there are.
std::int64_t CY4mFile::FindFrame(std::int64_t frame) {
    if (isEven_) return first_ + frame * (kShortHead + frameSize_);
    if (frame == next_ && frame > 0) return nextAt_;
    std::int64_t position = marks_[static_cast<std::size_t>(frame / kMarkStep)];
    for (std::int64_t at = frame / kMarkStep * kMarkStep; at < frame; ++at)
        position += ReadFrameHead(position) + frameSize_;
    return position;
}

bool CY4mFile::ReadFrame(std::int64_t frame, std::uint8_t* pixels) {
    if (isBusy_ || frame >= frames_) return false;
    const CBusy busy(isBusy_);
    std::int64_t position = FindFrame(frame);
    std::int64_t head = ReadFrameHead(position);
    if (head != kShortHead && isEven_) {
        WalkFrames();
        if (frame >= frames_) return false;
        position = FindFrame(frame);
        head = ReadFrameHead(position);
    }
    if (head == 0 || !ReadAt(position + head, planes_.data(), planes_.size())) {
        frames_ = frame;
        return false;
    }
    next_ = frame + 1;
    nextAt_ = position + head + frameSize_;
    ConvertY4mFrame(header_, planes_.data(), pixels);
    return true;
}
