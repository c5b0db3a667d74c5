#include "api/plugins/InheritedObject.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include <windows.h>

namespace vorlund::test {
namespace {

constexpr const char* kVariable = "VORLUND_TEST_OBJECT";

} // namespace

struct CInheritedObject::TState {
    HANDLE event;
};

CInheritedObject::CInheritedObject() : state_(new TState) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    state_->event = CreateEventW(&inherited, TRUE, FALSE, nullptr);
    const auto number = static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(state_->event));
    SetEnvironmentVariableA(kVariable, std::to_string(number).c_str());
}

CInheritedObject::~CInheritedObject() {
    CloseHandle(state_->event);
    delete state_;
}

bool CInheritedObject::IsUsed() const {
    return WaitForSingleObject(state_->event, 0) == WAIT_OBJECT_0;
}

void UseInheritedObject() {
    const char* const number = std::getenv(kVariable);
    if (number) SetEvent(reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::stoull(number))));
}

int CountOpenObjects() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return static_cast<int>(count);
}

} // namespace vorlund::test
