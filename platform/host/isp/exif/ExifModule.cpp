#define LOG_TAG "quen-isp"

#include "host/isp/exif/ExifModule.h"

#include <dlfcn.h>

#include <log/log.h>

#include "host/base/SiblingLibrary.h"

namespace quen::host::isp {

namespace {

constexpr char kFile[] = "libquen_exif.so";
constexpr char kEntry[] = "quenExifModule";

using Entry = ExifModule const* (*)();

/** Loads the module. */
ExifModule const* load() {
    void* const entry = findInSibling(reinterpret_cast<void const*>(&exifModule), kFile, kEntry);
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
