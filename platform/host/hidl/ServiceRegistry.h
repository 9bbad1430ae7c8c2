#pragma once

#include <string>
#include <string_view>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

/**
 * The process's services, found by an interface's descriptor and an instance's name, as getService
 * and registerAsService of the interfaces do. The registry holds a service until it is replaced or
 * taken out. Any thread; references are dropped outside the registry's lock.
 */
namespace quen::host {

/**
 * Makes an object the service of that name, in place of any earlier one.
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

/** Takes an object out wherever it is registered. False when it was not. */
bool unregisterService(android::sp<android::hidl::base::V1_0::IBase> const& service);

/** The service under an interface's own descriptor, as that interface. */
template <typename Interface>
android::sp<Interface> findServiceOf(std::string const& instance) {
    auto const service = findService(Interface::descriptor, instance);
    return static_cast<Interface*>(service.get());
}

}  // namespace quen::host
