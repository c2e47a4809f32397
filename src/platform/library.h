// A library that is loaded when it is first needed, because each one that a program begins with makes every
// start longer.
#pragma once

#include <dlfcn.h>

class Library {
public:
    explicit Library(const char* pszFile) : m_hLibrary(dlopen(pszFile, RTLD_LAZY | RTLD_LOCAL)) {}
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // False, and all that follow are too, when the library or the function is not there.
    template <class Function>
    bool Find(const char* pszName, Function* ppfn) {
        *ppfn = m_hLibrary ? reinterpret_cast<Function>(dlsym(m_hLibrary, pszName)) : nullptr;
        if (!*ppfn) m_hLibrary = nullptr;
        return *ppfn != nullptr;
    }

private:
    void* m_hLibrary;  // stays loaded
};
