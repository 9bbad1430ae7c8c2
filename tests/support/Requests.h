#pragma once

#include <vector>

#include <nscam/IMetadataConverter.h>
#include <nscam/IMetadataTagSet.h>

#include "support/Internals.h"
#include "support/StandInIsp.h"

namespace quentest {

/** A bridge with the platform's converter, and its callback. */
struct Bridge {
    android::sp<HalInterface> hal = new HalInterface(NSCam::IMetadataConverter::createInstance(
            NSCam::IDefaultMetadataTagSet::singleton()->getTagSet()));
    android::sp<HalInterface::ClientCallback> callback = hal->callback();

    /** Delivers a result. Returns whether its transport was told that all is well. */
    bool deliver(uint32_t number, uint32_t status = 0, std::vector<uint8_t> const& metadata = {}) {
        return callback->processResult({number, metadata, static_cast<isphal::Status>(status)})
                .isOk();
    }
};

/** A request as `process` builds one, with empty metadata; the request table's once recorded. */
inline OfflineRequest* newRequest(uint32_t number, char const* stage = "YUV2JPEG") {
    return new OfflineRequest{number, new NSCam::IMetadata, {}, {}, false, stage};
}

inline void deleteRequest(OfflineRequest* request) {
    delete request->metadata;
    delete request;
}

}  // namespace quentest
