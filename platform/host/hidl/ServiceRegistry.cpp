#define LOG_TAG "quenHost"

#include "host/hidl/ServiceRegistry.h"

#include <map>
#include <utility>
#include <vector>

#include <log/log.h>

#include "host/base/Mutex.h"
#include "host/hidl/DefaultServices.h"

using android::sp;
using android::hidl::base::V1_0::IBase;

namespace quen::host {
namespace {

using ServiceName = std::pair<std::string, std::string>;  // descriptor, instance

struct Registry {
    Mutex lock;
    /** Null for what the program has unregistered. */
    std::map<ServiceName, sp<IBase>> services HOST_GUARDED_BY(lock);
};

/**
 * Never destroyed, with the services in it: their threads use other objects of the process, which
 * would be destroyed before them.
 */
Registry& registry() {
    static auto* const instance = new Registry;
    return *instance;
}

ServiceName nameOf(std::string_view descriptor, std::string_view instance) {
    return {std::string(descriptor), std::string(instance)};
}

void logMissing(ServiceName const& name, std::string const& problem) {
    ALOGE("there is no service %s/%s: %s; register one with registerAsService(\"%s\")",
          name.first.c_str(), name.second.c_str(), problem.c_str(), name.second.c_str());
}

}  // namespace

android::status_t registerService(std::string_view descriptor, std::string_view instance,
                                  sp<IBase> service) {
    if (service == nullptr || descriptor.empty() || instance.empty()) {
        return android::BAD_VALUE;
    }
    ServiceName name = nameOf(descriptor, instance);
    Registry& known = registry();
    MutexLock const lock(known.lock);
    // The earlier service is released with the parameter, after the unlock.
    std::swap(known.services[std::move(name)], service);
    return android::OK;
}

sp<IBase> findService(std::string_view descriptor, std::string_view instance) {
    ServiceName const name = nameOf(descriptor, instance);
    Registry& known = registry();
    MutexLock const lock(known.lock);
    auto const found = known.services.find(name);
    return found == known.services.end() ? nullptr : found->second;
}

/** The default is made without the lock: making it may look up others. */
sp<IBase> obtainService(std::string_view descriptor, std::string_view instance) {
    ServiceName name = nameOf(descriptor, instance);
    Registry& known = registry();
    bool isWithdrawn = false;
    {
        MutexLock const lock(known.lock);
        auto const found = known.services.find(name);
        isWithdrawn = found != known.services.end();
        if (isWithdrawn && found->second != nullptr) {
            return found->second;
        }
    }
    std::string problem = "it was unregistered, or it died";
    sp<IBase> const made =
            isWithdrawn ? nullptr : makeDefaultService(descriptor, instance, problem);
    if (made == nullptr) {
        logMissing(name, problem);
        return nullptr;
    }
    MutexLock const lock(known.lock);
    // Meanwhile another may have come, which then stays.
    return known.services.emplace(std::move(name), made).first->second;
}

bool unregisterService(std::string_view descriptor, std::string_view instance) {
    ServiceName name = nameOf(descriptor, instance);
    sp<IBase> removed;
    Registry& known = registry();
    MutexLock const lock(known.lock);
    std::swap(known.services[std::move(name)], removed);
    return removed != nullptr;
}

bool unregisterService(sp<IBase> const& service) {
    // The caller's reference keeps the object alive: none is destroyed with the lock held.
    Registry& known = registry();
    MutexLock const lock(known.lock);
    bool removed = false;
    for (auto& [name, registered] : known.services) {
        if (registered != nullptr && registered == service) {
            registered = nullptr;
            removed = true;
        }
    }
    return removed;
}

}  // namespace quen::host
