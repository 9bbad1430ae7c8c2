#include "quenRecorder/SubmittedOutputs.h"

#include <fcntl.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "quenRecorder/BufferRecord.h"

namespace quen::recorder {
namespace {

using android::hardware::hidl_handle;

/** A clone of a handle; null when one of its descriptors is none, which would end the process. */
hidl_handle cloneOf(hidl_handle const& from) {
    native_handle const* const handle = from.getNativeHandle();
    bool const isSound =
            handle != nullptr && std::all_of(handle->data, handle->data + handle->numFds,
                                             [](int fd) { return ::fcntl(fd, F_GETFD) >= 0; });
    return isSound ? from : hidl_handle();
}

}  // namespace

using vendor::mediatek::hardware::camera::isphal::V1_0::ISPBuffer;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;

void SubmittedOutputs::add(ISPRequest const& request) {
    std::vector<Output> outputs;
    for (ISPBuffer const& buffer : request.outputBuffers) {
        Output& output = outputs.emplace_back();
        output.picture = cloneOf(buffer.buffer);
        if (!is3ABuffer(buffer.tuningData.getNativeHandle())) {
            output.tuning = cloneOf(buffer.tuningData);
        }
    }
    MutexLock const lock(mLock);
    mRequests.emplace(request.requestNumber, std::move(outputs));
}

std::vector<SubmittedOutputs::Output> SubmittedOutputs::take(uint32_t number) {
    std::vector<Output> outputs;
    MutexLock const lock(mLock);
    auto const found = mRequests.lower_bound(number);
    if (found != mRequests.end() && found->first == number) {
        outputs = std::move(found->second);
        mRequests.erase(found);
    }
    return outputs;
}

void SubmittedOutputs::takeBack(uint32_t number) {
    std::vector<Output> outputs;  // released after the lock
    MutexLock const lock(mLock);
    auto const behind = mRequests.upper_bound(number);
    if (behind != mRequests.begin() && std::prev(behind)->first == number) {
        outputs = std::move(std::prev(behind)->second);
        mRequests.erase(std::prev(behind));
    }
}

void SubmittedOutputs::clear() {
    std::multimap<uint32_t, std::vector<Output>> requests;  // released after the lock
    MutexLock const lock(mLock);
    requests.swap(mRequests);
}

}  // namespace quen::recorder
