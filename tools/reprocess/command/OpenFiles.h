#pragma once

#include <cstddef>

namespace quen::reprocess {

/**
 * Has the system allow this process as many open files as it may. Each buffer is one, and without
 * one for a copy of a handle the platform ends the process.
 *
 * @throws Failure when that is too few for a single picture
 */
void raiseOpenFiles();

/** How many inputs may be in work at a time, going by the open files that are allowed. */
size_t jobsByOpenFiles();

}  // namespace quen::reprocess
