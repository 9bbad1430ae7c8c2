#pragma once

#include <cstddef>
#include <vector>

#include "client/Reprocessor.h"
#include "command/FileNames.h"
#include "command/Options.h"
#include "report/Report.h"

namespace quen::reprocess {

/** How many buffers of a frame are worth keeping for those after it. */
size_t keptBuffersFor(Options const& options);

/**
 * Reprocesses every input of the command line, several at a time. One that fails does not stop the
 * others. What is printed comes in the order of the inputs. After a signal that would end the
 * process no further ones are begun; Interruption::follow then ends it.
 *
 * @param planned the jobs of the whole list, of which the shard's are done
 * @param trace the timeline; null for none
 * @return the exit code of the process
 */
int runBatch(Options const& options, std::vector<Job> const& planned, Reprocessor& reprocessor,
             Report& report, Trace* trace);

}  // namespace quen::reprocess
