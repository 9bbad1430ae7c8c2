#include "host/gralloc/MemoryMapping.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <iterator>
#include <map>
#include <tuple>

#include "host/base/Mutex.h"

namespace quen::host {

namespace {

using Key = std::tuple<dev_t, ino_t, size_t>;

/** A place for one mapping. Its lock is held while the mapping is made: no other waits for it. */
struct Slot {
    Mutex lock;
    std::weak_ptr<MemoryMapping> mapping HOST_GUARDED_BY(lock);
};

/** The slots of the memories that are mapped, or were when one was last added. */
class Slots {
  public:
    std::shared_ptr<Slot> find(Key const& key) {
        MutexLock const guard(mLock);
        auto const found = mSlots.find(key);
        if (found != mSlots.end()) {
            return found->second;
        }
        removeEmpty();
        return mSlots.emplace(key, std::make_shared<Slot>()).first->second;
    }

  private:
    void removeEmpty() HOST_REQUIRES(mLock) {
        for (auto slot = mSlots.begin(); slot != mSlots.end();) {
            // Nobody else can take hold of a slot while this lock is held.
            bool const isEmpty = slot->second.use_count() == 1 && isUnmapped(*slot->second);
            slot = isEmpty ? mSlots.erase(slot) : std::next(slot);
        }
    }

    static bool isUnmapped(Slot& slot) {
        MutexLock const guard(slot.lock);
        return slot.mapping.expired();
    }

    Mutex mLock;
    std::map<Key, std::shared_ptr<Slot>> mSlots HOST_GUARDED_BY(mLock);
};

}  // namespace

std::optional<MemoryIdentity> MemoryIdentity::of(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) {
        return std::nullopt;
    }
    return MemoryIdentity{status.st_dev, status.st_ino, static_cast<uint64_t>(status.st_size)};
}

std::shared_ptr<MemoryMapping> MemoryMapping::of(int descriptor, MemoryIdentity const& memory,
                                                 size_t bytes, PagesMade made) {
    static Slots* const slots = new Slots;  // buffers may be mapped until the process has ended
    std::shared_ptr<Slot> const slot = slots->find({memory.device, memory.inode, bytes});
    MutexLock const guard(slot->lock);
    std::shared_ptr<MemoryMapping> mapping = slot->mapping.lock();
    if (mapping == nullptr) {
        mapping = make(descriptor, bytes, made);
        slot->mapping = mapping;
    }
    return mapping;
}

std::shared_ptr<MemoryMapping> MemoryMapping::make(int descriptor, size_t bytes, PagesMade made) {
    MappedPages const pages = mapShared(descriptor, bytes, made);
    return pages.address == nullptr ? nullptr
                                    : std::shared_ptr<MemoryMapping>(new MemoryMapping(pages));
}

MemoryMapping::~MemoryMapping() {
    munmap(mPages.address, mPages.bytes);
}

}  // namespace quen::host
