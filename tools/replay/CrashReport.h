#pragma once

#include <cstddef>
#include <string>

namespace quen::replay {

/**
 * From now on a crash or an abort of the process is told on standard error, with the crossing after
 * which it came, and ends the process with an exit code. A debugger or a sanitizer still sees it.
 * The differences that were noted are printed before, on standard output.
 *
 * @param differences that are printed at most
 */
void reportCrashes(int exitCode, size_t differences);

/** Keeps a line for the case of a crash. Any thread. */
void noteDifference(std::string const& line);

/** Says how many crossings of the recording have happened. Any thread. */
void notePassed(size_t crossings);

}  // namespace quen::replay
