#pragma once

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/**
 * Renders the scene of the demo, sends its capture through both stages, writes the JPEG and
 * compares it with the scene.
 *
 * @param trace the timeline; null for none
 * @return the exit code of the process
 */
int runDemo(Options const& options, Reprocessor& reprocessor, Report& report, Trace* trace);

}  // namespace quen::reprocess
