#pragma once

#include <atomic>
#include <cstdint>

#include "host/log/LogControl.h"

namespace quen::host {

/** The highest level of any tag, and kByTag when tags have levels of their own. */
extern std::atomic<uint32_t> gWantedLevels;
constexpr uint32_t kByTag = 0x100;
constexpr uint32_t kLevelMask = 0xff;

/** Checks the level of a tag, where tags have levels of their own. */
bool isWantedByTag(char const* tag, LogLevel level);

/** Checks whether to log a line. Costs a load and a comparison when its level is not logged. */
inline bool isWanted(char const* tag, LogLevel level) {
    uint32_t const wanted = gWantedLevels.load(std::memory_order_relaxed);
    if (static_cast<uint32_t>(level) > (wanted & kLevelMask)) {
        return false;
    }
    return (wanted & kByTag) == 0 || isWantedByTag(tag, level);
}

}  // namespace quen::host
