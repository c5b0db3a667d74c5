/// \file
/// A disk that is full.
#pragma once

#include "support/EnvironmentScope_posix.h"

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
    /// A child that counts the lines it runs would cut off the files with everybody's counts. It finds none
    /// there, and its complaints go nowhere.
    const CEnvironmentScope noCounts_{"GCOV_PREFIX", "/dev/null"};
    const CEnvironmentScope noComplaints_{"GCOV_ERROR_FILE", "/dev/null"};
};

} // namespace vorlund::test
