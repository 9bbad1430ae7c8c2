#pragma once

#include "command/Options.h"

namespace quen::reprocess {

/**
 * Checks what no option can be checked for alone: whether options go together, and whether anything
 * makes use of them.
 *
 * @throws Failure
 */
void checkOptions(Options const& options);

}  // namespace quen::reprocess
