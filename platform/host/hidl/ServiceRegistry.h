#pragma once

#include <string>
#include <string_view>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

/**
 * The process's services by interface descriptor and instance name, as getService and
 * registerAsService of the interfaces use them. Holds a service until it is replaced or
 * unregistered. Any thread; drops references outside the lock.
 */
namespace quen::host {

/**
 * Registers an object under a name, in place of any earlier one.
 *
 * @param service of the interface that the descriptor names
 * @return OK, or BAD_VALUE for a null service or an empty name
 */
android::status_t registerService(std::string_view descriptor, std::string_view instance,
                                  android::sp<android::hidl::base::V1_0::IBase> service);

/** Null when there is no such service. */
android::sp<android::hidl::base::V1_0::IBase> findService(std::string_view descriptor,
                                                          std::string_view instance);

/** @return whether there was such a service */
bool unregisterService(std::string_view descriptor, std::string_view instance);

/** Unregisters an object from all of its names. False when it has none. */
bool unregisterService(android::sp<android::hidl::base::V1_0::IBase> const& service);

/** Finds a service under an interface's own descriptor, as that interface. */
template <typename Interface>
android::sp<Interface> findServiceOf(std::string const& instance) {
    auto const service = findService(Interface::descriptor, instance);
    return static_cast<Interface*>(service.get());
}

}  // namespace quen::host
