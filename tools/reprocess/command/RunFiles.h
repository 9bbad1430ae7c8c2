#pragma once

#include "command/FileNames.h"
#include "command/Options.h"

namespace quen::reprocess {

/**
 * Checks all files that a run reads and writes against each other, and that the timeline and the
 * recording can be written where they are named. Changes nothing.
 *
 * @throws Failure when one would take the place of another, or cannot be written
 */
void checkRunFiles(Options const& options, Plan const& plan);

}  // namespace quen::reprocess
