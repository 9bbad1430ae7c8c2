#include "client/ResultWaiter.h"

#include <utility>

namespace quen::reprocess {

using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

std::optional<ClientResult> ResultWaiter::waitFor(std::chrono::seconds limit) {
    auto const end = std::chrono::steady_clock::now() + limit;
    host::MutexLock const lock(mLock);
    while (!mHasEnded) {
        if (!mEnded.waitUntil(mLock, end) && !mHasEnded) {
            return std::nullopt;
        }
    }
    return std::move(mResult);
}

Return<void> ResultWaiter::notifyRequestResult(uint32_t /*requestNumber*/, Status status) {
    host::MutexLock const lock(mLock);
    mResult.status = status;
    mHasEnded = true;
    mEnded.notifyAll();
    return Void();
}

Return<void> ResultWaiter::notifyResultMetadata(uint32_t /*requestNumber*/,
                                                hidl_vec<uint8_t> const& metadata,
                                                Status /*status*/) {
    // The buffer is the library's and ends with this call.
    auto const* const source = reinterpret_cast<camera_metadata const*>(metadata.data());
    size_t const size = metadata.size();
    if (validate_camera_metadata_structure(source, &size) != 0) {
        return Void();
    }
    host::MutexLock const lock(mLock);
    mResult.metadata.reset(clone_camera_metadata(source));
    return Void();
}

}  // namespace quen::reprocess
