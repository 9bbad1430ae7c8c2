#include <quen/Quen3AInfoManager.h>

#include <utility>

#include "host/base/Mutex.h"
#include "host/threea/ThreeAStore.h"

using quen::host::IThreeAStore;
using quen::host::SharedMemoryThreeAStore;

namespace {

/** The store that is installed. */
struct Installed {
    quen::host::Mutex lock;
    std::shared_ptr<IThreeAStore> store HOST_GUARDED_BY(lock) =
            std::make_shared<SharedMemoryThreeAStore>();

    static Installed& instance() {
        static Installed installed;
        return installed;
    }
};

/** Shared with the caller: a replaced store lives until the calls in it return. */
std::shared_ptr<IThreeAStore> currentStore() {
    Installed& installed = Installed::instance();
    quen::host::MutexLock const lock(installed.lock);
    return installed.store;
}

}  // namespace

std::shared_ptr<IThreeAStore> quen::host::setThreeAStore(std::shared_ptr<IThreeAStore> store) {
    if (store == nullptr) {
        store = std::make_shared<SharedMemoryThreeAStore>();
    }
    Installed& installed = Installed::instance();
    quen::host::MutexLock const lock(installed.lock);
    return std::exchange(installed.store, std::move(store));
}

int Quen3AInfoManager::Get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) {
    return currentStore()->get3AInfoBuf(info, size);
}

int Quen3AInfoManager::GetTuningData(int* fd, unsigned int bufferIndex) {
    return currentStore()->getTuningData(fd, bufferIndex);
}
