#pragma once

#include <string>

#include "support/Bytes.h"

namespace quen::reprocess {

/**
 * Writes a file completely or not at all: to a file without a name in the same folder, which then
 * gets its name. Follows links; writes directly to a device or a pipe.
 *
 * @throws Failure, without the file's name; an existing file is then unchanged
 */
void writeOutputFile(std::string const& path, Bytes bytes);

/**
 * Tells before the work whether an output can be created.
 *
 * @throws Failure as writeOutputFile does when it cannot
 */
void checkOutputFile(std::string const& path);

/** The file that is written for a path: follows links; it need not exist. */
std::string outputTarget(std::string const& path);

/** @throws Failure */
void writeStandardOutput(Bytes bytes);

}  // namespace quen::reprocess
