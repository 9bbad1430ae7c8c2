#include "host/isp/exif/ExifModule.h"

#include "host/isp/loading/SideLibrary.h"

namespace quen::host::isp {

namespace {

/** Loads the module. */
ExifModule const* load() {
    using Entry = ExifModule const* (*)();
    auto const entry =
            reinterpret_cast<Entry>(loadFromSideLibrary("libquen_exif.so", "quenExifModule"));
    return entry == nullptr ? nullptr : entry();
}

}  // namespace

ExifModule const* exifModule() {
    static ExifModule const* const module = load();
    return module;
}

}  // namespace quen::host::isp
