// Reading a file.
#pragma once

#include "vorlund/data/base/Lending.h"
#include "vorlund/data/file/FileReader.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

class CFileInputStream : public CInputStreamImpl<IFileInputStream>, public ILendingInput {
public:
    static constexpr CId ClassId = classid::CFileInputStream;

    void Close() override;
    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;

    bool Eof() override;
    void Read(IMediaSample* sample) override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override;

    void Open(const wchar* path) override;

    /// The system's number of the first error in reading since the last `Open`; 0 without one.
    std::uint32_t GetReadError() const { return reader_.GetReadError(); }

private:
    CFileReader reader_;
    /// The path given to `Open`; empty when closed.
    CString name_;
};

} // namespace vorlund
