#include "host/hidl/ServiceRegistry.h"

#include <map>
#include <utility>
#include <vector>

#include "host/base/Mutex.h"

using android::sp;
using android::hidl::base::V1_0::IBase;

namespace quen::host {
namespace {

using ServiceName = std::pair<std::string, std::string>;  // descriptor, instance

struct Registry {
    Mutex lock;
    std::map<ServiceName, sp<IBase>> services HOST_GUARDED_BY(lock);  // none is null
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

bool unregisterService(std::string_view descriptor, std::string_view instance) {
    ServiceName const name = nameOf(descriptor, instance);
    sp<IBase> removed;
    Registry& known = registry();
    MutexLock const lock(known.lock);
    auto const found = known.services.find(name);
    if (found == known.services.end()) {
        return false;
    }
    removed = std::move(found->second);
    known.services.erase(found);
    return true;
}

bool unregisterService(sp<IBase> const& service) {
    // The caller's reference keeps the object alive: none is destroyed with the lock held.
    Registry& known = registry();
    MutexLock const lock(known.lock);
    bool removed = false;
    for (auto entry = known.services.begin(); entry != known.services.end();) {
        bool const matches = entry->second == service;
        entry = matches ? known.services.erase(entry) : std::next(entry);
        removed = removed || matches;
    }
    return removed;
}

}  // namespace quen::host
