// A library that is loaded when it is first needed, because each one that a program begins with makes every
// start longer.
#pragma once

#include <dlfcn.h>

class Library {
public:
    explicit Library(const char* pszFile) : m_hLibrary(dlopen(pszFile, RTLD_LAZY | RTLD_LOCAL)) {}
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // A function of it. False when it or the library is not there.
    template <class Function>
    bool Find(const char* pszName, Function* ppfn) {
        *ppfn = m_hLibrary ? reinterpret_cast<Function>(dlsym(m_hLibrary, pszName)) : nullptr;
        return *ppfn != nullptr;
    }

private:
    void* m_hLibrary;  // stays loaded
};

// The functions that are used of one library, of which there is one for each type Calls: loaded with the
// first call, from whatever thread. Null when pfnFind, which is to fill them in, does not find them all.
template <class Calls>
const Calls* LoadLibraryCalls(const char* pszFile, bool (*pfnFind)(Library* pLibrary, Calls* pCalls)) {
    static Calls calls;
    static const bool bComplete = [&] {
        Library library(pszFile);
        return pfnFind(&library, &calls);
    }();
    return bComplete ? &calls : nullptr;
}
