#pragma once

#include <cstdint>
#include <functional>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>

namespace android::hidl::base::V1_0 {

/** Debugging information about a service. */
struct DebugInfo final {
    enum class Architecture : int32_t { UNKNOWN = 0, IS_64BIT, IS_32BIT };

    int32_t pid;
    uint64_t ptr;  ///< address of the object in its process; 0 when unknown
    Architecture arch;
};

/**
 * Base of every HIDL interface. Implements the operations for an object of this process: an
 * implementation of an interface need not.
 */
struct IBase : virtual public ::android::RefBase {
    static const char* descriptor;

    using interfaceChain_cb = std::function<void(
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& descriptors)>;
    using interfaceDescriptor_cb =
            std::function<void(const ::android::hardware::hidl_string& descriptor)>;
    using getHashChain_cb =
            std::function<void(const ::android::hardware::hidl_vec<
                               ::android::hardware::hidl_array<uint8_t, 32>>& hashchain)>;
    using getDebugInfo_cb = std::function<void(const DebugInfo& info)>;

    /** Returns whether the object lives in another process. */
    virtual bool isRemote() const;

    /** Descriptors of the interface and its bases, the most derived first; here IBase's alone. */
    virtual ::android::hardware::Return<void> interfaceChain(interfaceChain_cb cb);

    /** Writes debugging text to the descriptor; writes nothing here. */
    virtual ::android::hardware::Return<void> debug(
            const ::android::hardware::hidl_handle& fd,
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& options);

    virtual ::android::hardware::Return<void> interfaceDescriptor(interfaceDescriptor_cb cb);

    /** Hashes of the interface's definitions; all zero where they were not released. */
    virtual ::android::hardware::Return<void> getHashChain(getHashChain_cb cb);

    virtual ::android::hardware::Return<void> setHALInstrumentation();

    /**
     * Notifies `recipient` when this service dies. The phone keeps no link to an object of the own
     * process, which cannot die before its clients. The host does: its services stand for remote
     * ones, whose death a program can simulate.
     *
     * @return false for a null recipient
     */
    virtual ::android::hardware::Return<bool> linkToDeath(
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,
            uint64_t cookie);

    /** Returns when the service is alive. */
    virtual ::android::hardware::Return<void> ping();

    virtual ::android::hardware::Return<void> getDebugInfo(getDebugInfo_cb cb);
    virtual ::android::hardware::Return<void> notifySyspropsChanged();

    /**
     * Removes one link of `recipient`, if there is one.
     *
     * @return false for a null recipient
     */
    virtual ::android::hardware::Return<bool> unlinkToDeath(
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient);
};

}  // namespace android::hidl::base::V1_0
