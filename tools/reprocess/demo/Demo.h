#pragma once

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/**
 * Renders the demo's scene, takes its capture through both stages, writes the JPEG and measures it
 * against the scene.
 *
 * @return the process' exit code
 */
int runDemo(Options const& options, Reprocessor& reprocessor, Report& report);

}  // namespace quen::reprocess
