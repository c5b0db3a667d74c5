// The decoder of a plug-in's table as an object of the library.
#pragma once

#include "vorlund/api/tables/TableInstance.h"
#include "vorlund/data/base/FormatRecord.h"

#include <vorlund/StreamFilterImpl.h>

#include <memory>

namespace vorlund::tables {

class CTableDecoder : public CInputFilterImpl<IInputStreamFilter> {
    using TLayer = CInputFilterImpl<IInputStreamFilter>;

public:
    /// That of the table: one for each object, and so no constant of the class.
    const CId ClassId;

    explicit CTableDecoder(TClassPtr tableClass);

    /// Raises or refuses with `CDataFormatException`, or `CIOException` for `VORLUND_PLUGIN_UNREADABLE`, with
    /// the plug-in's reason; raises `std::bad_alloc` for `VORLUND_PLUGIN_NO_MEMORY`, and what the stream
    /// raises.
    void Connect(IInputStream* stream) override;
    void Disconnect() override;
    std::uint32_t GetCapabilities() override;
    const TDataFormat& GetFormat() override;
    /// Raises `COperationNotSupportedException` "Length is not known".
    std::int64_t GetLength() override;
    std::int64_t Tell() override { return instance_ ? position_ : TLayer::Tell(); }
    /// Every position behind the end counts as the end. The plug-in learns of it with the next `Read`. Raises
    /// `CIOException` "Position is negative" and `COperationNotSupportedException` "Stream has no positions".
    void Seek(std::int64_t position) override;
    bool Eof() override { return !instance_ || hasEnded_ || GetRest() == 0; }
    /// Raises `CIOException` with the plug-in's reason, and as `Connect`; `CInvalidStateException` "Plug-in
    /// is closed" and "Decoder is being used".
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using TLayer::Read;
    /// Reads where the stream has no positions.
    void Skip(std::uint64_t count) override;

protected:
    ~CTableDecoder() noexcept(false) = default;
    void GiveBack();

private:
    /// Bytes behind the position; the most there can be when the length is not known.
    std::uint64_t GetRest() const;
    void SetFormat(const vorlund_plugin_format& format);
    /// The plug-in goes to the position. False when the decoder was let go meanwhile.
    bool GoToPosition(const std::shared_ptr<CTableInstance>& instance, const CFilterCalls::CCall& call);

    const TClassPtr class_;
    /// While connected.
    std::shared_ptr<CTableInstance> instance_;
    CFormatRecord format_;
    std::int64_t position_ = 0;
    /// Where the plug-in is; -1 when that is not known.
    std::int64_t pluginPosition_ = 0;
    bool hasEnded_ = false;
};

} // namespace vorlund::tables
