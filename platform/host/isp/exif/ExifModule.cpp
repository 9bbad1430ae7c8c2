#define LOG_TAG "quen-isp"

#include "host/isp/exif/ExifModule.h"

#include <dlfcn.h>

#include <log/log.h>

namespace quen::host::isp {

namespace {

constexpr char kFile[] = "libquen_exif.so";
constexpr char kEntry[] = "quenExifModule";

using Entry = ExifModule const* (*)();

/** The module's path: beside the library that this code is in. */
std::string modulePath() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void*>(&exifModule), &info) == 0 || info.dli_fname == nullptr) {
        return kFile;
    }
    std::string const own = info.dli_fname;
    size_t const slash = own.rfind('/');
    return slash == std::string::npos ? kFile : own.substr(0, slash + 1) + kFile;
}

/** Loads the module. */
ExifModule const* load() {
    void* const library = dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : dlsym(library, kEntry);
    if (entry == nullptr) {
        ALOGE("there is no EXIF: %s", dlerror());
        return nullptr;
    }
    return reinterpret_cast<Entry>(entry)();
}

}  // namespace

ExifModule const* exifModule() {
    static ExifModule const* const module = load();
    return module;
}

}  // namespace quen::host::isp
