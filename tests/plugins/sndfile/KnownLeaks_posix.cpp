// What libsndfile 1.2 leaks itself: for a refused Ogg file, and for one that a full disk does not take, the
// state that libvorbis and libogg made for it.
#include <cstdlib>
#include <string>

#include <dlfcn.h>

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis.so\nleak:libogg.so\nleak:libvorbisenc.so\n";
}

namespace {

/// Functions are known by their names as long as their library is there, also when the plug-in is gone.
[[maybe_unused]] void* const libsndfile = dlopen("libsndfile.so.1", RTLD_NOW | RTLD_NODELETE);

/// Programs that the tests start have no suppressions of their own.
[[maybe_unused]] const int set = [] {
    const char* const options = std::getenv("ASAN_OPTIONS");
    return setenv("ASAN_OPTIONS", ((options ? options : "") + std::string(":detect_leaks=0")).c_str(), 1);
}();

} // namespace
