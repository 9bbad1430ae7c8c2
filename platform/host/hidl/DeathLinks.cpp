#include "host/hidl/DeathLinks.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/base/Mutex.h"

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hidl::base::V1_0::IBase;

namespace quen::host {
namespace {

struct LinkTable {
    Mutex lock;
    std::vector<DeathLink> links HOST_GUARDED_BY(lock);  // oldest first
};

/** Never destroyed: objects link and unlink while the process exits, in any order. */
LinkTable& table() {
    static auto* const instance = new LinkTable;
    return *instance;
}

}  // namespace

void addDeathLink(DeathLink link) {
    // Dropped after the unlock: a destructor may call back into this table.
    std::vector<DeathLink> outlived;
    std::vector<sp<IBase>> alive;
    LinkTable& deathLinks = table();
    MutexLock const lock(deathLinks.lock);
    auto const firstOutlived = std::stable_partition(
            deathLinks.links.begin(), deathLinks.links.end(), [&](DeathLink const& known) {
                alive.push_back(known.service.promote());
                return alive.back() != nullptr;
            });
    std::move(firstOutlived, deathLinks.links.end(), std::back_inserter(outlived));
    deathLinks.links.erase(firstOutlived, deathLinks.links.end());
    deathLinks.links.push_back(std::move(link));
}

bool removeDeathLink(IBase& service, sp<hidl_death_recipient> const& recipient) {
    wp<IBase> const who(&service);
    DeathLink removed;
    LinkTable& deathLinks = table();
    MutexLock const lock(deathLinks.lock);
    auto const found = std::find_if(deathLinks.links.rbegin(), deathLinks.links.rend(),
                                    [&](DeathLink const& link) {
                                        return link.service == who && link.recipient == recipient;
                                    });
    if (found == deathLinks.links.rend()) {
        return false;
    }
    removed = std::move(*found);
    deathLinks.links.erase(std::next(found).base());
    return true;
}

std::vector<DeathLink> takeDeathLinks(IBase& service) {
    wp<IBase> const who(&service);
    std::vector<DeathLink> taken;
    LinkTable& deathLinks = table();
    MutexLock const lock(deathLinks.lock);
    auto const firstTaken =
            std::stable_partition(deathLinks.links.begin(), deathLinks.links.end(),
                                  [&](DeathLink const& link) { return link.service != who; });
    std::move(firstTaken, deathLinks.links.end(), std::back_inserter(taken));
    deathLinks.links.erase(firstTaken, deathLinks.links.end());
    return taken;
}

}  // namespace quen::host
