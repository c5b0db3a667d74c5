// A file as it is shown to decoders that look for chunks.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>

#include <cstdint>

/// Passes everything on to a file. But a file of zeros is a file of chunks without data, which decoders read
/// head by head, for minutes: behind so many heads of zeros the file seems to end, until the search is over.
class CBriefInput : public vorlund::CInputStreamImpl<vorlund::IInputStream> {
public:
    static constexpr vorlund::CId ClassId{0x6C1E93D7, 0x4B02A85F, 0x9A37E0C4, 0x2F58D61B};

    static vorlund::CRefPtr<CBriefInput> Begin(vorlund::IInputStream& file);
    /// From now on the file has its whole length.
    void EndSearch() { isSearch_ = false; }

    void Close() override { file_->Close(); }
    std::uint32_t GetCapabilities() override { return file_->GetCapabilities(); }
    std::int64_t GetLength() override { return file_->GetLength(); }
    void Flush() override { file_->Flush(); }
    void Seek(std::int64_t position) override { file_->Seek(position); }
    std::int64_t Tell() override { return file_->Tell(); }
    bool Eof() override { return file_->Eof(); }
    const vorlund::TDataFormat& GetFormat() override { return file_->GetFormat(); }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override { file_->Skip(count); }

private:
    vorlund::CRefPtr<vorlund::IInputStream> file_;
    bool isSearch_ = true;
    /// Reads of zeros, as of heads, one after the other.
    std::uint32_t zeros_ = 0;
};
