#include "FileCopy_linux.h"

#include "CopyStream.h"

#include <vorlund/Exception.h>

#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace vorlund;

namespace {

constexpr TFailure kCannotCopy{VRL_L("CFileCopy::CFileCopy"), VRL_L("plugins/system-codecs/FileCopy_linux"),
                               1, VRL_L("Cannot copy the file")};

/// On a disk where that is possible, as sound files can be large.
int CreateFile() {
    const int file = open("/var/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    return file >= 0 ? file : memfd_create("vorlund", MFD_CLOEXEC);
}

} // namespace

CFileCopy::CFileCopy(IInputStream& stream) : state_(std::make_unique<TState>()) {
    struct TCloser {
        int descriptor;
        ~TCloser() {
            if (descriptor >= 0) close(descriptor);
        }
    } file{CreateFile()};
    if (file.descriptor < 0) Raise<CIOException>(kCannotCopy);
    CopyStream(stream, [&](const std::uint8_t* bytes, std::size_t count) {
        while (count > 0) {
            const ssize_t written = write(file.descriptor, bytes, count);
            if (written <= 0) Raise<CIOException>(kCannotCopy);
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    });
    state_->descriptor = std::exchange(file.descriptor, -1);
}

CFileCopy::~CFileCopy() {
    if (state_->descriptor >= 0) close(state_->descriptor);
}
