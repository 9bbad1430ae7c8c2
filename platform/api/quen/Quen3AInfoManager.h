#pragma once

#include <cstdint>

/** A shared 3A information buffer, as handed out by Quen3AInfoManager. */
struct QIF3ABufferInfo {
    int32_t fd = -1;          ///< descriptor, owned by the manager
    uint32_t size = 0;        ///< bytes
    int32_t bufferIndex = 0;  ///< key for Quen3AInfoManager::GetTuningData
    uint32_t reserved[5] = {};
};

/** Shared 3A information and tuning-data buffers, found by index. Any thread. */
class Quen3AInfoManager {
  public:
    /**
     * Hands out a buffer of at least `size` bytes.
     *
     * @param info filled on success, unchanged on failure
     * @return 0, or a negative error code
     */
    static int Get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size);

    /**
     * Finds the buffer that was handed out under an index.
     *
     * @param fd receives its descriptor, owned by the manager; unchanged on failure
     * @return 0, or a negative error code
     */
    static int GetTuningData(int* fd, unsigned int bufferIndex);
};
