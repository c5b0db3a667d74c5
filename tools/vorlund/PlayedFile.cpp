#include "PlayedFile.h"

#include "DecodeAdvice.h"
#include "Decoding.h"
#include "Diagnostics.h"
#include "SoundReader.h"
#include "StandardInput.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <new>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kSkippedBytes = 64 * 1024;

} // namespace

void CEndNotice::Tell() {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    changed_.notify_all();
}

void CEndNotice::Wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, limit, [this] { return hasEnded_; });
    hasEnded_ = false;
}

CPlayedFile::CPlayedFile(const std::string& name, CEndNotice& notice, TListening listening)
    : path_(PathFromUtf8(name.c_str())), notice_(notice), listening_(listening) {
    source_.emplace(name == "-" ? ReadStandardInput() : CInputStreamSelector(path_.c_str()));
    Decode();
    heard_.SetFormat(format_, listening_ == TListening::Samples);
}

CPlayedFile::~CPlayedFile() {
    try {
        decoded_.Reset();
        source_.reset();
    } catch (...) {
        // It was shown to the debugger when it was raised, and nothing depends on it.
    }
}

void CPlayedFile::Decode() {
    decoded_ = OpenDecoded(*source_, path_);
    format_ = static_cast<const TDataFormat_AudioPcm&>(decoded_->GetFormat());
    if (format_.GetBlockSize() == 0 || format_.samplesPerSec == 0)
        throw TProgramError{VRL_L("Cannot play '") + path_ + VRL_L("': it has sound without samples")};
    const std::int64_t length = decoded_->GetLength();
    // Streams that do not know their length say 0.
    if (length > 0 || decoded_->Eof())
        frames_ = static_cast<std::uint64_t>(std::max<std::int64_t>(length, 0)) / format_.GetBlockSize();
}

std::uint64_t CPlayedFile::GetFrame() const {
    return stream_.position / format_.GetBlockSize();
}

void CPlayedFile::Seek(std::uint64_t frame) {
    const std::uint64_t to = std::min(frame, frames_.value_or(frame)) * format_.GetBlockSize();
    if ((decoded_->GetCapabilities() & STREAM_CAPABILITY_SEEK) != 0) {
        decoded_->Seek(static_cast<std::int64_t>(to));
    } else {
        if (to < stream_.position) {
            source_->GetInputStreamTmp()->Seek(0);
            Decode();
            stream_.position = 0;
        }
        Skip(to - stream_.position);
    }
    stream_.position = to;
    stream_.failure.clear();
    stream_.hasEnded = false;
    heard_.Forget();
}

void CPlayedFile::Skip(std::uint64_t bytes) {
    std::vector<std::uint8_t> skipped(kSkippedBytes);
    while (bytes > 0) {
        const std::uint64_t count =
            decoded_->Read(skipped.data(), std::min<std::uint64_t>(bytes, skipped.size()));
        if (count == 0) return;
        bytes -= count;
    }
}

/// Up to the last whole frame, so that what follows is not shifted.
std::uint64_t CPlayedFile::Read(void* buffer, std::uint64_t size) {
    const std::uint64_t block = format_.GetBlockSize();
    if (frames_)
        size = std::min(size, *frames_ * block - std::min(*frames_ * block, stream_.position.load()));
    const std::size_t count = Fill(*decoded_, buffer, static_cast<std::size_t>(size));
    if (count == size) return count;
    const std::uint64_t torn = (stream_.position + count) % block;
    return count - std::min<std::uint64_t>(torn, count);
}

wstring CPlayedFile::GetFailure() {
    try {
        CheckReading(*source_->GetInputStreamTmp(), path_);
    } catch (const TProgramError& error) {
        return error.text;
    }
    return stream_.failure.empty() ? wstring()
                                   : VRL_L("Cannot play '") + path_ + VRL_L("' further: ") + stream_.failure;
}

std::int64_t CPlayedFile::CReading::GetLength() {
    return static_cast<std::int64_t>(file.frames_.value_or(0) * file.format_.GetBlockSize());
}

std::uint64_t CPlayedFile::CReading::Read(void* buffer, std::uint64_t size) {
    if (hasEnded || size == 0) return 0;
    std::uint64_t count = 0;
    try {
        count = file.Read(buffer, size);
        const std::uint64_t block = file.format_.GetBlockSize();
        if (file.listening_ != TListening::Nothing)
            file.heard_.Add(buffer, static_cast<std::size_t>(count / block), position / block);
    } catch (const CException& error) {
        failure = error.GetReason();
    } catch (const std::bad_alloc&) {
        failure = VRL_L("Out of memory");
    } catch (const std::exception& error) {
        failure = PathFromUtf8(error.what());
    }
    // What the failure has left locked must not be in the way of other threads.
    if (!failure.empty()) v.GiveBackLocks();
    position += count;
    const bool isWhole = file.frames_ && file.GetFrame() >= *file.frames_;
    if (count < size || isWhole) {
        hasEnded = true;
        file.notice_.Tell();
    }
    return count;
}
