#pragma once

#include <string>

#include "support/Bytes.h"

namespace quen::reprocess {

/**
 * Writes a file whole or not at all: under another name in the same folder first, then renamed over
 * what was there. A link is followed; a device or a pipe is written to as it is.
 *
 * @throws Failure, without the file's name; what was there is then as before
 */
void writeOutputFile(std::string const& path, Bytes bytes);

}  // namespace quen::reprocess
