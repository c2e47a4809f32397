// A shared library that is loaded on first use, because every library linked to a program slows its start.
#pragma once

#include <dlfcn.h>

class Library {
public:
    explicit Library(const char* pszFile) : m_hLibrary(dlopen(pszFile, RTLD_LAZY | RTLD_LOCAL)) {}
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Looks up a function. False when it, or the library, is missing.
    template <class Function>
    bool Find(const char* pszName, Function* ppfn) {
        *ppfn = m_hLibrary ? reinterpret_cast<Function>(dlsym(m_hLibrary, pszName)) : nullptr;
        return *ppfn != nullptr;
    }

private:
    void* m_hLibrary;  // never unloaded
};

// The functions used from one library, one set per type Calls. Loads the library on the first call, from any
// thread. pfnFind fills in the functions; null when it does not find all of them.
template <class Calls>
const Calls* LoadLibraryCalls(const char* pszFile, bool (*pfnFind)(Library* pLibrary, Calls* pCalls)) {
    static Calls calls;
    static const bool bComplete = [&] {
        Library library(pszFile);
        return pfnFind(&library, &calls);
    }();
    return bComplete ? &calls : nullptr;
}
