#pragma once

#include <cstddef>
#include <cstdint>

#include "RecordedOrder.h"

namespace quen::replay {

/** What the recording says of a call of `process`, beyond its begin. */
struct Lookahead {
    recording::IspRequest const* request = nullptr;     ///< that the ISP got; null for none
    recording::ClientReturn const* returned = nullptr;  ///< null where the recording ends before
    bool isAnswered = false;  ///< whether the result came before the call returned
};

/** @param index of the call's crossing */
Lookahead lookAhead(RecordedOrder const& order, size_t index);

}  // namespace quen::replay
