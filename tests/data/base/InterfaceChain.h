/// \file
/// Which interfaces an object of the stream family answers for.
#pragma once

#include <vorlund/File.h>
#include <vorlund/MediaSample.h>
#include <vorlund/StreamFilter.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace vorlund::test {

/// Checks that `object` answers exactly for `chain` among all interfaces of the family: with itself and one
/// more reference, or with null and none.
inline void ExpectChain(IObject* object, const std::vector<CId>& chain) {
    const CId family[] = {IObject::InterfaceId,
                          IStream::InterfaceId,
                          IInputStream::InterfaceId,
                          IOutputStream::InterfaceId,
                          IMediaSample::InterfaceId,
                          ISwBufferMediaSample::InterfaceId,
                          IInputStreamFilter::InterfaceId,
                          IOutputStreamFilter::InterfaceId,
                          IFileInputStream::InterfaceId,
                          IFileOutputStream::InterfaceId,
                          CId::Null(),
                          object->GetClassId()};
    for (const CId& id : family) {
        SCOPED_TRACE(Narrow(id.ToString()));
        const bool expected = std::find(chain.begin(), chain.end(), id) != chain.end();
        object->AddRef();
        const int before = object->Release();
        IObject* const answer = object->QueryInterface(id);
        EXPECT_EQ(answer, expected ? object : nullptr);
        object->AddRef();
        EXPECT_EQ(object->Release(), before + (expected ? 1 : 0));
        if (answer) answer->Release();
    }
}

} // namespace vorlund::test
