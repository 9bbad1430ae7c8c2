#pragma once

namespace quen::reprocess {

/**
 * Opens /dev/null for standard streams that are closed: a file opened later would take their place,
 * and messages would end up in it. To be called first of all, once.
 */
void occupyStandardStreams();

/** Whether the process was started without a standard output. */
bool isStandardOutputClosed();

}  // namespace quen::reprocess
