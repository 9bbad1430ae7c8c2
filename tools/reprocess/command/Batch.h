#pragma once

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/**
 * Reprocesses every input of the command line, each on its own: one that fails does not stop the
 * rest.
 *
 * @return the process' exit code
 */
int runBatch(Options const& options, Reprocessor& reprocessor, Report& report);

}  // namespace quen::reprocess
