#include "Listener.h"

#include <unistd.h>

#include <hidl/Status.h>
#include <system/camera_metadata.h>

using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace quensoak {

namespace {

/** The client's status of an ISP status: 1 to 5 and 7 have one of their own, all others are OK. */
postproc::Status clientStatus(isphal::Status status) {
    auto const value = static_cast<uint32_t>(status);
    bool const hasName = value < 8 && value != 6;
    return static_cast<postproc::Status>(hasName ? value : 0);
}

}  // namespace

Return<void> Listener::notifyResultMetadata(uint32_t requestNumber,
                                            hidl_vec<uint8_t> const& metadata,
                                            postproc::Status status) {
    check(requestNumber, status);
    auto const* const told = reinterpret_cast<camera_metadata const*>(metadata.data());
    if (told == nullptr || get_camera_metadata_size(told) != metadata.size()) {
        mAccount->wrong = "told no metadata";
    }
    if (mAccount->endsTold > 0) {
        mAccount->wrong = "told the metadata after the end";
    }
    ++mAccount->metadataTold;
    if (mAccount->plan.slowMicroseconds > 0) {
        usleep(mAccount->plan.slowMicroseconds);
    }
    return reply();
}

Return<void> Listener::notifyRequestResult(uint32_t requestNumber, postproc::Status status) {
    check(requestNumber, status);
    ++mAccount->endsTold;
    return reply();
}

void Listener::check(uint32_t requestNumber, postproc::Status status) {
    bool const ofDeath = mAccount->inDoomedSession && status == postproc::Status::INTERNAL_ERROR;
    if (requestNumber != mAccount->number) {
        mAccount->wrong = "told another number";
    }
    if (!ofDeath && status != clientStatus(mAccount->plan.status)) {
        mAccount->wrong = "told another status";
    }
}

Return<void> Listener::reply() const {
    if (mAccount->plan.listenerLost) {
        return android::hardware::Status::fromExceptionCode(
                android::hardware::Status::EX_TRANSACTION_FAILED, "the client is gone");
    }
    return Void();
}

}  // namespace quensoak
