#include "vorlund/util/PushObjectEnumerator.h"

#include <algorithm>

namespace vorlund {
namespace {

/// Reserving is only a hint, which `Push` does not need: even a wild count takes no more memory than this
/// many pointers.
constexpr unsigned int kMaxReserved = 65536;

} // namespace

bool CPushObjectEnumerator::HasNext() {
    started_ = true;
    return position_ < objects_.GetCount();
}

IObject* CPushObjectEnumerator::GetNext() {
    if (!HasNext()) return nullptr;
    IObject* const object = objects_[position_++];
    object->AddRef();
    return object;
}

void CPushObjectEnumerator::Push(IObject* object) {
    if (!started_) objects_.Share(object);
}

void CPushObjectEnumerator::Reserve(unsigned int count) {
    if (!started_ && objects_.GetCount() == 0) objects_.Reserve(std::min(count, kMaxReserved));
}

} // namespace vorlund
