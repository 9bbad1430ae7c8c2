#pragma once

#include "command/Options.h"

namespace quen::reprocess {

/**
 * Finds the files that the inputs name: standard input is read, and a folder gives place to the
 * pictures in it and below it, in the order of their names. Hidden files are left, and so is what
 * lies in the output's folder. An input that is not there, and a folder that cannot be searched,
 * stay in the list and get a problem.
 *
 * @throws Failure for a folder that is not asked to be searched, has no picture or takes the
 *         outputs, for an empty name, and for a standard input that is named twice or cannot be
 *         read
 */
void findInputFiles(Options& options);

}  // namespace quen::reprocess
