#pragma once

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/**
 * Renders the scene of the demo, sends its capture through both stages, writes the JPEG and
 * compares it with the scene.
 *
 * @return the exit code of the process
 */
int runDemo(Options const& options, Reprocessor& reprocessor, Report& report);

}  // namespace quen::reprocess
