#pragma once

#include <cstdint>

#include <hidl/HidlSupport.h>
#include <nscam/IMetadata.h>

/**
 * What is kept of a request while the ISP device works on it.
 *
 * Built by `process` on the heap; owned by the request table once recorded there, and destroyed
 * when the request's result has been handled.
 */
struct OfflineRequest {
    uint32_t requestNumber;      ///< ISP request number, key of the request table
    NSCam::IMetadata* metadata;  ///< prepared request metadata, owned
    android::hardware::hidl_handle inputTuningBuffer;
    android::hardware::hidl_handle outputTuningBuffer;
    /**
     * true: the tuning handles carry plain descriptors of the 3A store; false: they are graphic
     * buffers, to be freed through the mapper.
     */
    bool tuningBufferIsExternal;
    char const* stage;  ///< the device's stage text, not owned; read when the request is recorded
};

namespace quen {

/** Frees a record's tuning buffers and metadata and deletes it; null is ignored. Any thread. */
void destroyOfflineRequest(OfflineRequest* request);

}  // namespace quen
