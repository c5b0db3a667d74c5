#include "vorlund/data/file/OpenFailure.h"

#include "vorlund/data/file/FileSystem.h"

#include <vorlund/StreamErrors.h>

namespace vorlund {
namespace {

constinit thread_local TOpenFailure lastFailure{OPEN_CAUSE_NONE, 0};

} // namespace

void NoteOpenFailure(const wchar* path) {
    lastFailure = filesystem::ExplainOpening(path);
}

TOpenFailure GetOpenFailure() {
    return lastFailure;
}

const wchar* DescribeOpenCause(TOpenCause cause) {
    switch (cause) {
    case OPEN_CAUSE_NONE:
        return VRL_L("nothing is known against it");
    case OPEN_CAUSE_MISSING:
        return VRL_L("there is no such file");
    case OPEN_CAUSE_FOLDER:
        return VRL_L("it is a folder");
    case OPEN_CAUSE_NOT_PERMITTED:
        return VRL_L("it is not permitted");
    case OPEN_CAUSE_BUSY:
        return VRL_L("another program uses it");
    case OPEN_CAUSE_NO_POSITIONS:
        return VRL_L("it is a pipe or a device without positions");
    case OPEN_CAUSE_NAME:
        return VRL_L("the name is none that the system knows");
    case OPEN_CAUSE_TOO_MANY_FILES:
        return VRL_L("too many files are open");
    case OPEN_CAUSE_OTHER:
        break;
    }
    return VRL_L("the system refuses it");
}

} // namespace vorlund
