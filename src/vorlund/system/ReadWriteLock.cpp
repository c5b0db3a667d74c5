#include "vorlund/system/ReadWriteLockData.h"

#include <vorlund/ClassObject.h>

#include <new>

namespace vorlund {

CReadWriteLock::CReadWriteLock()
    : data_(new (CClassObject::operator new(sizeof(TReadWriteLockData))) TReadWriteLockData) {}

CReadWriteLock::~CReadWriteLock() {
    // Nobody may wait on a lock that goes. If somebody does, the data is left to them rather than torn away.
    if (data_->CountWaiting() > 0) return;
    data_->~TReadWriteLockData();
    CClassObject::operator delete(data_);
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
