#pragma once

#include "command/Options.h"

namespace quen::reprocess {

/**
 * Has all that crosses between this tool, the library and the ISP written down from now on, when
 * the command line asks for it. The ISP's service must be registered.
 *
 * @return false, said on standard error, when the file cannot be written
 */
bool startRecording(Options const& options);

/**
 * Ends the recording, if there is one. A recording that is not whole is told on standard error.
 *
 * @return `exitCode`, or one that tells of the loss
 */
int finishRecording(Options const& options, int exitCode);

}  // namespace quen::reprocess
