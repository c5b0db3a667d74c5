// The child program of the unloading tests: not linked to the library, it loads and unloads it at run time,
// in the state that its argument names.
#include "api/unload_child.h"

#include <cstdlib>
#include <string_view>

namespace vorlund::test {
namespace {

[[noreturn]] void Fail(int code) {
    std::_Exit(code);
}

/// The library for the length of a block.
class CLibrary {
public:
    CLibrary() : module_(LoadModule("unload_client")) {
        if (!module_) Fail(2);
        Find<void()>("UnloadClientListen")();
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
    ~CLibrary() {
        if (!UnloadModule(module_)) Fail(3);
        // Otherwise the end of the process would be what is tested.
        if (IsLoaded("vorlund")) Fail(4);
    }

    void Open() {
        if (Find<int()>("UnloadClientOpen")() != 1) Fail(5);
    }
    void Close() { Find<void()>("UnloadClientClose")(); }

private:
    template <class TFunction> TFunction* Find(const char* name) {
        auto* const function = FindFunction(module_, name);
        if (!function) Fail(6);
        return reinterpret_cast<TFunction*>(function);
    }

    void* module_;
};

int Run(std::string_view mode) {
    if (IsLoaded("vorlund")) return 7;
    if (mode == "open-in-a-second-life") {
        CLibrary first;
        first.Open();
        first.Close();
    }
    {
        CLibrary library;
        if (!IsLoaded("vorlund")) return 8;
        if (mode != "never-opened") library.Open();
        if (mode == "closed") library.Close();
    }
    return 0;
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    return argc == 2 ? vorlund::test::Run(argv[1]) : 64;
}
