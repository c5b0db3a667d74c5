#include "StandardInput.h"

#include "Diagnostics.h"
#include "Terminal.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <cstdio>
#include <vector>

using namespace vorlund;

CInputStreamSelector ReadStandardInput() {
    constexpr std::size_t kBlockSize = 1 << 20;
    const auto resource = CreateAs<IResource>(classid::CResource);
    {
        const COutputStreamSelector output(resource.Get());
        std::vector<std::uint8_t> block(kBlockSize);
        std::FILE* const input = GetBinaryInput();
        while (const std::size_t count = std::fread(block.data(), 1, block.size(), input)) {
            output.GetOutputStreamTmp()->Write(block.data(), count);
        }
        if (std::ferror(input)) throw TProgramError{VRL_L("Cannot read the standard input")};
    }
    return CInputStreamSelector(resource.Get());
}
