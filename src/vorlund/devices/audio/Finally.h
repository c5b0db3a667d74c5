// What is done at the end of a block, however that is left.
#pragma once

#include <utility>

namespace vorlund {

/// Calls a function that does not raise.
template <class TFunction> class CFinally {
public:
    explicit CFinally(TFunction function) : function_(std::move(function)) {}
    CFinally(const CFinally&) = delete;
    CFinally& operator=(const CFinally&) = delete;
    ~CFinally() { function_(); }

private:
    TFunction function_;
};

} // namespace vorlund
