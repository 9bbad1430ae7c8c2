#define LOG_TAG "quen-isp"

#include "host/isp/device/RequestWork.h"

#include <chrono>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include <log/log.h>
#include <mtkcam/isp_metadata.h>

#include "host/isp/device/IspTags.h"
#include "host/isp/device/ProcessRequest.h"

using vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;

namespace quen::host::isp {

namespace {

constexpr unsigned int kIspTypeInt32 = 1;
constexpr unsigned int kMostEntries = 3;
constexpr std::chrono::milliseconds kClientWaitLimit{50};

using Clock = std::chrono::steady_clock;

/** The time since a point in time. */
std::chrono::microseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
}

/** Appends an entry of int32 items. */
template <size_t N>
void addInts(std::vector<unsigned char>& buffer, uint32_t tag, int32_t (&&values)[N]) {
    add_isp_metadata_entry(buffer, tag, kIspTypeInt32, values, sizeof(values), nullptr);
}

/** Builds the result metadata: the crop, the tuning mode as requested, the depth of raw samples. */
std::vector<unsigned char> describe(Request const& request, IspReport const& report) {
    std::vector<unsigned char> buffer;
    initial_isp_metadata_vector(buffer, kMostEntries);
    PixelRect const& crop = request.crop;
    addInts(buffer, tag::kCropRegion, {crop.x, crop.y, crop.width, crop.height});
    if (request.settings.tuningMode) {
        addInts(buffer, tag::kTuningMode, {*request.settings.tuningMode});
    }
    if (report.isRaw) {
        addInts(buffer, tag::kRawBitDepth, {report.rawBits});
    }
    return buffer;
}

}  // namespace

RequestWork::RequestWork(std::unique_ptr<Request> request, SoftwareIspOptions const& options)
    : mRequest(std::move(request)), mOptions(options) {}

void RequestWork::run() {
    IspReport report;
    report.legs.push_back({"queue", since(mRequest->submitted), mRequest->submitted});
    Status const status = processRequest(*mRequest, report);
    if (status != Status::OK) {
        ALOGE("request %u failed with %s: %s", mRequest->number, toString(status).c_str(),
              report.problem.c_str());
    }
    releaseBuffers();
    hold(report);
    deliver(status, report);
}

void RequestWork::abandon() {
    IspReport report;
    report.problem = "it was given up before it was begun";
    report.crop = mRequest->crop;
    releaseBuffers();
    hold(report);
    deliver(Status::REQUEST_ERROR, report);
}

/** Releases the buffers, before the client is told that the request is done. */
void RequestWork::releaseBuffers() {
    mRequest->input = RequestImage();
    mRequest->outputs.clear();
}

/** Waits for the minimum latency, and until the client waits for its result. */
void RequestWork::hold(IspReport& report) {
    Clock::time_point const start = Clock::now();
    std::this_thread::sleep_until(mRequest->submitted + mOptions.minimumLatency);
    mRequest->client.waitUntilAsleep(kClientWaitLimit);
    report.legs.push_back({"hold", since(start), start});
}

void RequestWork::deliver(Status status, IspReport const& report) {
    ISPResult result;
    result.reqNumber = mRequest->number;
    result.status = status;
    result.resultMetadata = describe(*mRequest, report);
    if (mOptions.observer) {
        mOptions.observer->onResult(result, report);
    }
    if (mRequest->configuration->callback == nullptr) {
        return;
    }
    auto const transport = mRequest->configuration->callback->processResult(result);
    (void)transport.isOk();  // the client may be gone
}

}  // namespace quen::host::isp
