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
 *
 * A program need not register the platform's own services: the first look-up of one makes it (see
 * DefaultServices.h). One that a program has registered or unregistered itself stays as the program
 * wants it: no default takes its place.
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

/** Null when there is no such service. Makes no default. */
android::sp<android::hidl::base::V1_0::IBase> findService(std::string_view descriptor,
                                                          std::string_view instance);

/**
 * As findService, but makes the platform's default where it has one of that name.
 *
 * @return null, logged with the name and what to do about it, when there is neither
 */
android::sp<android::hidl::base::V1_0::IBase> obtainService(std::string_view descriptor,
                                                            std::string_view instance);

/** @return whether there was such a service; either way no default takes its place from now on */
bool unregisterService(std::string_view descriptor, std::string_view instance);

/** Unregisters an object from all of its names. False when it has none. */
bool unregisterService(android::sp<android::hidl::base::V1_0::IBase> const& service);

/** Obtains a service under an interface's own descriptor, as that interface. */
template <typename Interface>
android::sp<Interface> obtainServiceOf(std::string const& instance) {
    auto const service = obtainService(Interface::descriptor, instance);
    return static_cast<Interface*>(service.get());
}

}  // namespace quen::host
