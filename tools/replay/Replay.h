#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Recording.h"

namespace quen::replay {

/** What a replay has found. */
struct Outcome {
    std::vector<std::string> differences;  ///< a line each, in the order of the recording
    /** Whether it ended where the recorded process did, which the library then aborted. */
    bool endsProcess = false;
    /** Whether threads are left that cannot go on: the process has to end at once. */
    bool isBlocked = false;
};

/**
 * Plays the client and the ISP of a recording against the library, and compares what it says to
 * either. Once in a process: it registers the platform's services. Descriptor 0 has to be open: the
 * handle of a 3A buffer has 0 in its descriptor slot, and copies of it duplicate that.
 *
 * @param patience for a call that the library does not make
 */
Outcome replay(Recording const& recording, std::chrono::seconds patience);

}  // namespace quen::replay
