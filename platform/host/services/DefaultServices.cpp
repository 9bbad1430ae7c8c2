#include "host/hidl/DefaultServices.h"

#include <dlfcn.h>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/base/SiblingLibrary.h"
#include "host/gralloc/MemfdAllocator.h"
#include "host/gralloc/MemfdMapper.h"

using android::sp;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;
using android::hidl::base::V1_0::IBase;
using vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;

namespace quen::host {
namespace {

constexpr char kIspEntry[] = "quenSoftwareIspModule";

template <typename Service>
sp<IBase> makeService(std::string& /*problem*/) {
    return new Service;
}

/** The ISP's library links imaging libraries: only a program that uses the ISP loads it. */
sp<IBase> makeSoftwareIsp(std::string& problem) {
    void* const entry = findInSibling(reinterpret_cast<void const*>(&makeDefaultService),
                                      QUEN_ISP_LIBRARY, kIspEntry);
    if (entry == nullptr) {
        char const* const reason = dlerror();
        problem = std::string(
                          "the software ISP, which belongs beside libquen_host, is not loaded: ") +
                  (reason == nullptr ? "unknown" : reason);
        return nullptr;
    }
    return reinterpret_cast<IISPModule* (*)()>(entry)();
}

struct DefaultService {
    char const* descriptor;
    char const* instance;
    sp<IBase> (*make)(std::string& problem);
};

}  // namespace

sp<IBase> makeDefaultService(std::string_view descriptor, std::string_view instance,
                             std::string& problem) {
    static DefaultService const defaults[] = {
            {IAllocator::descriptor, "default", makeService<MemfdAllocator>},
            {IMapper::descriptor, "default", makeService<MemfdMapper>},
            {IISPModule::descriptor, "internal/0", makeSoftwareIsp},
    };
    for (DefaultService const& known : defaults) {
        if (descriptor == known.descriptor && instance == known.instance) {
            return known.make(problem);
        }
    }
    problem = "the platform has none of that name by default";
    return nullptr;
}

}  // namespace quen::host
