#pragma once

#include <cstddef>

#include "client/Reprocessor.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/** How many buffers are worth keeping from frame to frame. */
size_t keptBuffers(Options const& options);

/**
 * Reprocesses every input of the command line, several at a time. One that fails does not stop the
 * others. What is printed comes in the order of the inputs. A signal that would end the process
 * does so when what is in work has been written.
 *
 * @return the exit code of the process
 */
int runBatch(Options const& options, Reprocessor& reprocessor, Report& report);

}  // namespace quen::reprocess
