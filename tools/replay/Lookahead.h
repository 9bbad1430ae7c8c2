#pragma once

#include <cstddef>
#include <cstdint>

#include <optional>

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

/**
 * The request whose result a configuration waited for when it was recorded, but that is outstanding
 * when the library makes it in the replay: it has not waited.
 *
 * @param next the crossing whose turn it is
 * @param index of the configuration's crossing
 */
std::optional<uint32_t> findOutstanding(RecordedOrder const& order, size_t next, size_t index);

}  // namespace quen::replay
