#pragma once

#include <string>
#include <string_view>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

namespace quen::host {

/**
 * Makes the service that the platform has under a name by default: the graphics allocator and
 * mapper "default", and the software ISP's module "internal/0". For the registry, at the first
 * look-up. Any thread; several may make one of the same name, of which the registry keeps one.
 *
 * @param problem why there is none, when there is none
 * @return null when the platform has no such service, or cannot make it
 */
android::sp<android::hidl::base::V1_0::IBase> makeDefaultService(std::string_view descriptor,
                                                                 std::string_view instance,
                                                                 std::string& problem);

}  // namespace quen::host
