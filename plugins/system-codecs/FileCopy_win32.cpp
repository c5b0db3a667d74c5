#include "FileCopy_win32.h"
#include "CopyStream.h"

#include <vorlund/Exception.h>

#include <objbase.h>

using namespace vorlund;

namespace {

constexpr TFailure kCannotCopy{VRL_L("CFileCopy::CFileCopy"), VRL_L("plugins/system-codecs/FileCopy_win32"),
                               1, VRL_L("Cannot copy the file")};

} // namespace

CFileCopy::CFileCopy(IInputStream& stream) : state_(std::make_unique<TState>()) {
    ::IStream* memory = nullptr;
    if (CreateStreamOnHGlobal(nullptr, TRUE, &memory) != S_OK) Raise<CIOException>(kCannotCopy);
    const std::unique_ptr<::IStream, void (*)(::IStream*)> owner(
        memory, [](::IStream* object) { object->Release(); });
    CopyStream(stream, [memory](const std::uint8_t* bytes, std::size_t count) {
        ULONG written = 0;
        const HRESULT result = memory->Write(bytes, static_cast<ULONG>(count), &written);
        if (FAILED(result) || written != count) Raise<CIOException>(kCannotCopy);
    });
    memory->AddRef();
    state_->stream = memory;
}

CFileCopy::~CFileCopy() {
    if (state_->stream) state_->stream->Release();
}
