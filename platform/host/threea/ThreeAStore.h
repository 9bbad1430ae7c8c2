#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include <quen/Quen3AInfoManager.h>

#include "host/base/Mutex.h"

namespace quen::host {

/** Source of the buffers of Quen3AInfoManager. Any thread. */
class IThreeAStore {
  public:
    virtual ~IThreeAStore() = default;

    /** As Quen3AInfoManager::Get3AInfoBuf. */
    virtual int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) = 0;

    /** As Quen3AInfoManager::GetTuningData. */
    virtual int getTuningData(int* fd, unsigned int bufferIndex) = 0;
};

/**
 * Installs the store of Quen3AInfoManager; null installs a new SharedMemoryThreeAStore. Any thread.
 *
 * @return the store that was installed before
 */
std::shared_ptr<IThreeAStore> setThreeAStore(std::shared_ptr<IThreeAStore> store);

/**
 * A bounded pool of shared-memory buffers, created on demand. When the pool is full, hands out the
 * least recently handed out buffer again, with its old content. Descriptors are 3 or more; the
 * destructor closes them.
 */
class SharedMemoryThreeAStore final : public IThreeAStore {
  public:
    static constexpr uint32_t kBufferBytes = 0x1fa400;
    static constexpr unsigned int kBuffers = 16;

    SharedMemoryThreeAStore() = default;
    ~SharedMemoryThreeAStore() override;

    SharedMemoryThreeAStore(SharedMemoryThreeAStore const&) = delete;
    SharedMemoryThreeAStore& operator=(SharedMemoryThreeAStore const&) = delete;

    int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) override;
    int getTuningData(int* fd, unsigned int bufferIndex) override;

  private:
    struct Buffer {
        int descriptor = -1;
        uint64_t lastHandedOut = 0;
    };

    Mutex mLock;
    /** The buffer of index i is at i - 1. */
    std::array<Buffer, kBuffers> mBuffers HOST_GUARDED_BY(mLock);
    uint64_t mHandedOut HOST_GUARDED_BY(mLock) = 0;
};

}  // namespace quen::host
