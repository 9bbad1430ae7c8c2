#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

namespace quen::host {

/**
 * Has a service die as far as others can tell: it leaves the registry, and who was linked to its
 * death is told, in the order of linking, on this thread. A link is used up by it. Any thread.
 */
void announceDeath(android::sp<android::hidl::base::V1_0::IBase> const& service);

}  // namespace quen::host
