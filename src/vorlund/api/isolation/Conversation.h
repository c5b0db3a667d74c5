// The talk with the process of the isolated decoders. Nothing that it says is believed before it is whole and
// possible: what runs there may be hostile.
#pragma once

#include "vorlund/api/isolation/IsolationProtocol.h"
#include "vorlund/api/plugins/ChildProcess.h"

#include <vorlund/Stream.h>

#include <cstdint>
#include <vector>

namespace vorlund::isolation {

/// Why a conversation has ended.
enum class TEnd {
    Died,   ///< the process is gone
    Silent, ///< no answer in time
    Garbled ///< something that is no answer
};

/// Raised when the conversation ends, and by every use of it from then on.
struct TConversationEnded {
    TEnd end;
    /// For `Died`: the signal that ended it, or what it returned.
    std::int32_t code;
};

class CConversation {
public:
    /// `seconds`: the longest time for an answer.
    CConversation(const wchar* helper, const std::vector<wstring>& arguments, unsigned int seconds);

    bool IsStarted() const { return process_.IsStarted(); }

    /// Sends a question; the time for its answer begins.
    void Ask(CMessage& message);
    /// The next message that is no question about `source`. It is valid until the next call. Raises
    /// `TConversationEnded`, and what the source raises, which ends the conversation too.
    CReceived Listen(IInputStream& source);
    /// For an answer that is not possible.
    [[noreturn]] void EndGarbled() { End(TEnd::Garbled); }

private:
    using TClock = CChildProcess::TClock;

    [[noreturn]] void End(TEnd end);
    void Send(CMessage& message);
    /// Waits until `bytes_` holds `size` bytes behind the last message.
    void Fill(std::size_t size);
    void DeliverSource(IInputStream& source, CReceived& question);

    CChildProcess process_;
    const std::chrono::seconds limit_;
    TClock::time_point deadline_;
    /// What has come, with the last message at its begin.
    std::vector<std::uint8_t> bytes_;
    std::size_t messageSize_ = 0;
    bool isEnded_ = false;
    TConversationEnded end_{};
};

} // namespace vorlund::isolation
