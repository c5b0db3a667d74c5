/// \file
/// What the suites of resources share.
#pragma once

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>

#include <gtest/gtest.h>

#include <cstring>

namespace vorlund::test {

/// The bytes of `resource`.
inline TBytes BytesOf(IResource& resource) {
    const auto* const data = static_cast<const std::uint8_t*>(resource.Lock(LOCK_MODE_READ));
    TBytes bytes;
    if (data) bytes.assign(data, data + resource.GetSize());
    resource.Unlock();
    return bytes;
}

/// Gives `resource` these bytes; counts as one modification.
inline void SetBytes(IResource& resource, const TBytes& bytes) {
    resource.SetSize(bytes.size());
    void* const data = resource.Lock(LOCK_MODE_WRITE);
    if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
    resource.Unlock();
}

/// Whether the calling thread holds no lock on `resource`: giving one back is then reported.
inline bool IsUnlocked(IResource& resource) {
    const CDebugRecorder recorder;
    resource.Unlock();
    return recorder.GetTexts(DEBUG_MESSAGE_BOX).size() == 2;
}

class CResourceTest : public testing::Test {
protected:
    ~CResourceTest() noexcept override { EXPECT_EQ(CLiveObject::GetCount(), before_); }

    CLibraryScope library_;
    int before_ = CLiveObject::GetCount();
    CRefPtr<IResource> resource_ = CreateAs<IResource>(classid::CResource);
};

} // namespace vorlund::test
