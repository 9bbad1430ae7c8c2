#pragma once

#include <string>

#include <hidl/Status.h>

namespace quen::replay {

/** A failure of the transport, as a call's outcome. */
inline android::hardware::Status lostTransport(std::string const& description) {
    return android::hardware::Status::fromExceptionCode(
            android::hardware::Status::EX_TRANSACTION_FAILED, description.c_str());
}

}  // namespace quen::replay
