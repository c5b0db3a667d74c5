// Who owns an answer of the X server.
#pragma once

#include <cstdlib>
#include <memory>

namespace vorlund {

struct TFreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// A reply, event or error that libxcb gave to its caller, who frees it by `free`; or null.
template <class T> using CXcbReply = std::unique_ptr<T, TFreeReply>;

template <class T> CXcbReply<T> OwnReply(T* reply) {
    return CXcbReply<T>(reply);
}

} // namespace vorlund
