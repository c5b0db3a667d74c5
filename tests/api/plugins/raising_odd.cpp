// Plug-ins that raise exceptions of which hardly anything is known, after one class and a decoder of another
// were registered.
#include "api/plugins/Report.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Vorlund.h>

using namespace vorlund;

bool VrlInitPlugin() {
    v.GetClassStore().RegisterClassVrl({{0x7E57C1A5, 20, 21, 22}, VRL_L("test::COdd"), nullptr});
    v.GetCodecClassStore().RegisterDecoder({classid::CObject, {1, 2, 3, 4}, {5, 6, 7, 8}});
    throw CException(VORLUND_TEST_METHOD, nullptr, 0, nullptr, static_cast<TExceptionType>(999));
}

void VrlClosePlugin() {
    test::Report("close", "raising_odd");
}
