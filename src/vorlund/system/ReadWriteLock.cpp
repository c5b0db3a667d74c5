#include "vorlund/system/ReadWriteLockData.h"

namespace vorlund {

CReadWriteLock::CReadWriteLock() : data_(new TReadWriteLockData) {}

CReadWriteLock::~CReadWriteLock() {
    // Nobody may wait for a lock that is destroyed. If somebody does, the data is left to those who wait.
    if (data_->CountWaiting() == 0) delete data_;
}

void CReadWriteLock::Lock(TLockMode mode, unsigned int param) {
    data_->Lock(mode, param);
}

void CReadWriteLock::Unlock() {
    data_->Unlock();
}

TLockMode CReadWriteLock::GetLockMode() {
    return data_->GetLockMode();
}

unsigned int CReadWriteLock::GetParam() {
    return data_->GetParam();
}

} // namespace vorlund
