/// \file
/// A disk that is full.
#pragma once

#include <csignal>

#include <sys/resource.h>

namespace vorlund::test {

/// Files of this process and its children may not become larger than this.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t size) : formerAction_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit{size, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;
    ~CFileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, formerAction_);
    }

private:
    void (*const formerAction_)(int);
    rlimit former_;
};

} // namespace vorlund::test
