#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "recording.pb.h"

namespace quen::replay {

/** A file that is no recording that can be read; says what to do. */
struct Unreadable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** A recording, in memory. */
struct Recording {
    bool holdsPictures = false;
    bool isCut = false;  ///< it ends in the middle of a session, and perhaps of a crossing
    std::vector<recording::Crossing> crossings;  ///< without the header and the end
};

/**
 * Reads a recording up to its last whole crossing.
 *
 * @throws Unreadable when there is no such file, it does not begin as a recording does, it holds no
 *         crossing, or it is damaged rather than cut off
 */
Recording readRecording(std::string const& path);

}  // namespace quen::replay
