#pragma once

#include <string>

#include "support/Cases.h"

namespace quenbench {

/**
 * Times every case with Google Benchmark, whose flags `argc` and `argv` may hold. A group is one
 * benchmark, whose repetitions come in random order among the others'; within it the cases are run
 * in turns, so that whatever else the machine does meets them all alike. A median is told of a
 * case's runs.
 *
 * @param counts a file of counts, a line each: "<kind> <case> <count of one operation>"
 * @return figures that live as long as the process; null when the arguments are no good
 */
Figures const* timeCases(Cases const& cases, std::string const& counts, int argc, char** argv);

}  // namespace quenbench
