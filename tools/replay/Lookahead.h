#pragma once

#include <cstddef>
#include <cstdint>

#include "RecordedOrder.h"

namespace quen::replay {

/** What the recording says of a call of `process`, beyond its begin. */
struct Lookahead {
    recording::IspRequest const* request = nullptr;     ///< that the ISP got; null for none
    recording::ClientReturn const* returned = nullptr;  ///< null where the recording ends before
    /** Whether the result came once it was submitted, and before the call returned. */
    bool isAnswered = false;
};

/** @param index of the call's crossing */
Lookahead lookAhead(RecordedOrder const& order, size_t index);

}  // namespace quen::replay
