#pragma once

#include <string>

#include "support/Cases.h"

namespace quenbench {

/**
 * Times every case with Google Benchmark; `argc` and `argv` may hold its flags. A group is one
 * benchmark, and the repetitions of all groups run in random order. Within a group the cases run in
 * turn, in random order, so that other load on the machine and the state of its caches affect them
 * alike. The figure is the median of the runs.
 *
 * @param counts a file of counts, a line each: "<kind> <case> <count per operation>"
 * @return figures that live as long as the process; null for invalid arguments
 */
Figures const* timeCases(Cases const& cases, std::string const& counts, int argc, char** argv);

}  // namespace quenbench
