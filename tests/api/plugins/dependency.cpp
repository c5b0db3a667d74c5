// The library that a plug-in of the tests needs: once as its author wrote it, once as somebody else did.
#include <vorlund/Platform.h>

extern "C" VRL_API const char* GetDependencyAuthor();

const char* GetDependencyAuthor() {
    return VORLUND_TEST_AUTHOR;
}
