#pragma once

#include <string>

namespace quen::reprocess {

constexpr char kStandardInput[] = "-";

/**
 * The path that an input is read at: its own, or that of a copy of standard input, which the first
 * call makes in memory. Thread-safe.
 *
 * @throws Failure when standard input cannot be read, or does not end within 2 GiB
 */
std::string readablePath(std::string const& input);

}  // namespace quen::reprocess
