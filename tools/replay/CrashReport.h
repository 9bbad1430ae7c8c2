#pragma once

#include <cstddef>

namespace quen::replay {

/**
 * From now on a crash or an abort of the process is told on standard error, with the crossing after
 * which it came, and ends the process with an exit code. A debugger or a sanitizer still sees it.
 */
void reportCrashes(int exitCode);

/** Says how many crossings of the recording have happened. Any thread. */
void notePassed(size_t crossings);

}  // namespace quen::replay
