// The library that a plug-in of the tests needs: once as its author wrote it, once as somebody else did. It
// has a table as plug-ins have, which is not that of whoever needs it.
#include <vorlund/Platform.h>
#include <vorlund/PluginTable.h>

extern "C" VRL_API const char* GetDependencyAuthor();
extern "C" VRL_API vorlund_plugin_table vorlund_plugin_v1;

vorlund_plugin_table vorlund_plugin_v1 = {};

const char* GetDependencyAuthor() {
    return VORLUND_TEST_AUTHOR;
}
