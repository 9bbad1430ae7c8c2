#pragma once

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/**
 * Reprocesses every input of the command line. One that fails does not stop the others.
 *
 * @return the exit code of the process
 */
int runBatch(Options const& options, Reprocessor& reprocessor, Report& report);

}  // namespace quen::reprocess
