// A stream as a plug-in's decoder sees it.
#pragma once

#include <vorlund/PluginTable.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <exception>

namespace vorlund::tables {

/// The input of one decoder. It stays where it is while the plug-in has its address.
///
/// What a stream raises must not pass through the plug-in. It is kept, the plug-in gets a code, and when it
/// then fails itself, `Raise` lets the exception go on, as if there were nobody between.
class CTableInput {
public:
    explicit CTableInput(CRefPtr<IInputStream> stream);
    CTableInput(const CTableInput&) = delete;
    CTableInput& operator=(const CTableInput&) = delete;

    const vorlund_plugin_input* Get() const { return &record_; }
    /// Goes to the start, if the stream has positions. Raises what the stream raises.
    void Rewind();

    /// A call into the plug-in, for the length of a block: only inside of one the input works.
    class CUse {
    public:
        explicit CUse(CTableInput& input) : input_(input) {
            input.failure_ = nullptr;
            input.reason_.clear();
            input.isInUse_ = true;
        }
        CUse(const CUse&) = delete;
        CUse& operator=(const CUse&) = delete;
        ~CUse() { input_.isInUse_ = false; }

    private:
        CTableInput& input_;
    };
    bool IsInUse() const { return isInUse_; }

    /// After a call that failed: raises what the stream has raised meanwhile, and `std::bad_alloc` for that
    /// code.
    void Raise(std::int32_t code) const;
    /// What the plug-in has said about it; may be empty.
    const wstring& GetReason() const { return reason_; }

private:
    struct TRecord : vorlund_plugin_input {
        CTableInput* owner;
    };

    bool HasPositions() const;
    template <class TAct> static std::int32_t Run(const vorlund_plugin_input* input, TAct act) noexcept;

    static std::int32_t VORLUND_PLUGIN_CALL OnRead(const vorlund_plugin_input* input, void* buffer,
                                                   std::uint32_t size, std::uint32_t* count);
    static std::int32_t VORLUND_PLUGIN_CALL OnSeek(const vorlund_plugin_input* input,
                                                   const std::int64_t* position);
    static std::int32_t VORLUND_PLUGIN_CALL OnTell(const vorlund_plugin_input* input, std::int64_t* position);
    static std::int32_t VORLUND_PLUGIN_CALL OnLength(const vorlund_plugin_input* input, std::int64_t* length);
    static std::int32_t VORLUND_PLUGIN_CALL OnFormat(const vorlund_plugin_input* input,
                                                     vorlund_plugin_format* format);
    static void VORLUND_PLUGIN_CALL OnExplain(const vorlund_plugin_input* input, const char* reason);
    static void VORLUND_PLUGIN_CALL OnContainer(const vorlund_plugin_input* input, const char* name);
    static void VORLUND_PLUGIN_CALL OnValue(const vorlund_plugin_input* input, const char* name,
                                            const std::int64_t* value);
    static void VORLUND_PLUGIN_CALL OnRemark(const vorlund_plugin_input* input, const char* text);

    TRecord record_;
    const CSafeRefPtr<IInputStream> stream_;
    bool isInUse_ = false;
    std::exception_ptr failure_;
    wstring reason_;
};

} // namespace vorlund::tables
