// Functions of a library that is bound at run time.
#pragma once

#include <dlfcn.h>

template <class TFunction> bool FindIn(void* module, const char* name, TFunction& function) {
    function = reinterpret_cast<TFunction>(dlsym(module, name));
    return function != nullptr;
}
