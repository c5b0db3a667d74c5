#include "vorlund/data/resource/ResourceWriter.h"

#include "vorlund/data/resource/Resource.h"
#include "vorlund/data/resource/ResourceLock.h"
#include "vorlund/data/resource/ResourceReference.h"

#include <cstring>
#include <limits>

namespace vorlund {
namespace {

/// The identifier alone is not enough: applications may register a class of their own under it.
CResource* AsOwn(IResource* resource) {
    if (!resource || resource->GetClassId() != CResource::ClassId) return nullptr;
    return dynamic_cast<CResource*>(resource);
}

void Copy(std::byte* target, const void* source, std::uint64_t size) {
    if (size > 0) std::memmove(target, source, static_cast<std::size_t>(size));
}

/// Gives a foreign resource new contents. False when it got no memory for them.
bool Replace(IResource& resource, const CByteBlock& contents, std::uint64_t size) {
    resource.SetSize(size);
    const CResourceLock lock(resource, LOCK_MODE_WRITE);
    if (!lock.GetData()) return size == 0;
    Copy(lock.GetData(), contents.Get(), size);
    return true;
}

/// `SetSize` keeps nothing, so a foreign resource that grows is put together outside and copied back.
bool WriteForeign(IResource& resource, const CResourceLock& lock, std::uint64_t position, const void* buffer,
                  std::uint64_t size) {
    const std::uint64_t length = lock.GetSize();
    const std::uint64_t end = position + size;
    if (end <= length) {
        Copy(lock.GetData() + position, buffer, size);
        return true;
    }
    CByteBlock contents;
    if (!contents.Allocate(end)) return false;
    Copy(contents.Get(), lock.GetData(), length);
    if (position > length)
        std::memset(contents.Get() + length, 0, static_cast<std::size_t>(position - length));
    Copy(contents.Get() + position, buffer, size);
    if (Replace(resource, contents, end)) return true;
    Replace(resource, contents, length);
    return false;
}

} // namespace

void CResourceWriter::Bind(IResource* resource) {
    own_ = nullptr;
    Rebind(resource_, resource);
    own_ = AsOwn(resource);
}

std::optional<std::uint64_t> CResourceWriter::Write(std::optional<std::uint64_t> position, const void* buffer,
                                                    std::uint64_t size) {
    const CResourceLock lock(*resource_, LOCK_MODE_WRITE);
    const std::uint64_t start = position.value_or(lock.GetSize());
    if (size > std::numeric_limits<std::uint64_t>::max() - start) return std::nullopt;
    const bool isDone =
        own_ ? own_->WriteAt(start, buffer, size) : WriteForeign(*resource_, lock, start, buffer, size);
    if (!isDone) return std::nullopt;
    return start + size;
}

} // namespace vorlund
