// One decoder of a plug-in at work: its input, what it has opened, and the calls into it.
#pragma once

#include "vorlund/api/tables/TableClasses.h"
#include "vorlund/api/tables/TableInput.h"

#include <cstddef>
#include <memory>

namespace vorlund::tables {

/// What a call into a plug-in gave.
struct TAnswer {
    std::int32_t code = VORLUND_PLUGIN_OK;
    /// What the plug-in has said about a failure; may be empty.
    wstring reason = {};
};

/// Who calls holds a reference to it for as long, so a stream may let go of the decoder meanwhile; the last
/// reference closes what was opened. Calls raise what the stream has raised when the plug-in has failed, and
/// `std::bad_alloc`. One thread at a time.
class CTableInstance {
public:
    CTableInstance(TClassPtr tableClass, CRefPtr<IInputStream> stream);
    CTableInstance(const CTableInstance&) = delete;
    CTableInstance& operator=(const CTableInstance&) = delete;
    ~CTableInstance();

    /// Asks whether the input is for this decoder, and opens it.
    TAnswer Open();
    TAnswer Read(void* buffer, std::uint32_t size, std::uint32_t& count);
    TAnswer Seek(std::int64_t position);

    /// What was opened.
    const vorlund_plugin_opened& GetOpened() const { return opened_; }
    /// False when the plug-in is closed, and must not be called.
    bool IsAlive() const { return class_->life->isOpen; }
    /// Whether a call is under way. Plug-ins are not called from inside of their own calls.
    bool IsBusy() const { return input_.IsInUse(); }
    bool HasPositions() const { return class_->decoder.seek != nullptr; }

private:
    template <class TCall> TAnswer Run(TCall call);

    const TClassPtr class_;
    CTableInput input_;
    vorlund_plugin_opened opened_ = {};
    bool isOpen_ = false;
    /// With an `instance_size`.
    std::unique_ptr<std::byte[]> block_;
};

/// Why the format of `opened` is none that a decoder of `wanted` may have; empty when it is one.
wstring CheckFormat(const vorlund_plugin_format& format, const CId& wanted);

} // namespace vorlund::tables
