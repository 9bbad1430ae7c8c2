#include "host/base/SiblingLibrary.h"

#include <dlfcn.h>

#include <string>

namespace quen::host {
namespace {

/** The path of a file beside the library that a function is in; the bare name when unknown. */
std::string pathBeside(void const* code, char const* file) {
    Dl_info info = {};
    if (dladdr(code, &info) == 0 || info.dli_fname == nullptr) {
        return file;
    }
    std::string const own = info.dli_fname;
    size_t const slash = own.rfind('/');
    return slash == std::string::npos ? file : own.substr(0, slash + 1) + file;
}

}  // namespace

void* findInSibling(void const* code, char const* file, char const* symbol) {
    void* const library = dlopen(pathBeside(code, file).c_str(), RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr : dlsym(library, symbol);
}

}  // namespace quen::host
