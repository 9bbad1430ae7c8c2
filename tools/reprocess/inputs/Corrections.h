#pragma once

#include "command/Options.h"
#include "inputs/Capture.h"

namespace quen::reprocess {

/**
 * Puts what the command line says of a capture's levels and gains in place of what the facts have.
 *
 * @throws Failure when black is then not below white
 */
void applyCorrections(InputOptions const& options, CaptureFacts& facts);

}  // namespace quen::reprocess
