#include "outputs/RgbFileModule.h"

#include "host/isp/loading/SideLibrary.h"

namespace quen::reprocess {

RgbFileModule const* rgbFileModule() {
    using Entry = RgbFileModule const* (*)();
    static auto const entry = reinterpret_cast<Entry>(
            host::isp::loadFromSideLibrary("libquen_rgb_files.so", "quenRgbFileModule"));
    return entry == nullptr ? nullptr : entry();
}

}  // namespace quen::reprocess
