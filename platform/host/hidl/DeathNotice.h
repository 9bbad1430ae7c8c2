#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

namespace quen::host {

/**
 * Simulates the death of a service: unregisters it, then notifies the linked recipients on this
 * thread, in the order of linking. Removes their links. Any thread.
 */
void announceDeath(android::sp<android::hidl::base::V1_0::IBase> const& service);

}  // namespace quen::host
