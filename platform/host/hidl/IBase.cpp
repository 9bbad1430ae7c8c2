#include <android/hidl/base/1.0/IBase.h>

#include <unistd.h>

#include "host/hidl/DeathLinks.h"

using android::sp;
using android::hardware::hidl_array;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace android::hidl::base::V1_0 {

// NOLINTBEGIN(performance-unnecessary-value-param): callbacks are passed as hidl-gen declares them.

const char* IBase::descriptor("android.hidl.base@1.0::IBase");

bool IBase::isRemote() const {
    return false;
}

Return<void> IBase::interfaceChain(interfaceChain_cb cb) {
    cb({descriptor});
    return Void();
}

Return<void> IBase::debug(hidl_handle const& /*fd*/, hidl_vec<hidl_string> const& /*options*/) {
    return Void();
}

Return<void> IBase::interfaceDescriptor(interfaceDescriptor_cb cb) {
    cb(descriptor);
    return Void();
}

Return<void> IBase::getHashChain(getHashChain_cb cb) {
    cb({hidl_array<uint8_t, 32>()});
    return Void();
}

Return<void> IBase::setHALInstrumentation() {
    return Void();
}

Return<bool> IBase::linkToDeath(sp<hidl_death_recipient> const& recipient, uint64_t cookie) {
    if (recipient == nullptr) {
        return false;
    }
    quen::host::addDeathLink({this, recipient, cookie});
    return true;
}

Return<void> IBase::ping() {
    return Void();
}

Return<void> IBase::getDebugInfo(getDebugInfo_cb cb) {
    cb({getpid(), 0, DebugInfo::Architecture::IS_64BIT});
    return Void();
}

Return<void> IBase::notifySyspropsChanged() {
    return Void();
}

Return<bool> IBase::unlinkToDeath(sp<hidl_death_recipient> const& recipient) {
    if (recipient == nullptr) {
        return false;
    }
    quen::host::removeDeathLink(*this, recipient);
    return true;
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace android::hidl::base::V1_0
