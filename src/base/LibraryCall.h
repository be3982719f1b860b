#pragma once

#include <dlfcn.h>

/// A function of a library that is loaded at run time; false, and null, if `library` is null or has
/// none of that name.
template <class Call>
bool findCall(void* library, const char* name, Call& call) {
    call = library ? reinterpret_cast<Call>(dlsym(library, name)) : nullptr;
    return call != nullptr;
}
