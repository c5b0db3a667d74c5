#include "vorlund/devices/ResourceHolder.h"

#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/ClassIds.h>

namespace vorlund {
namespace {

constexpr TFailure kNoResource{VRL_L("vorlund::CResourceHolder::GetResource"),
                               VRL_L("src/vorlund/devices/ResourceHolder"), 34,
                               VRL_L("Cannot create resource")};

} // namespace

CRefPtr<IResource> NewHeldResource() {
    return CreateOrRaise<IResource>(classid::CResource, kNoResource);
}

} // namespace vorlund
