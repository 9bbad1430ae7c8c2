#pragma once

#include <string>
#include <vector>

namespace quenbench {

/** The cost of a process from start to end. */
struct Cost {
    double seconds = 0;           ///< wall time
    double processorSeconds = 0;  ///< of all its threads, user and system
    double peakBytes = 0;         ///< largest resident set
};

/**
 * Runs a program and waits for it. Its standard output is discarded.
 *
 * The peak of a child starts at the size of its parent, so the measuring process must be small.
 *
 * @return false when it could not be run, or failed
 */
bool runChild(std::vector<std::string> const& command, Cost& cost);

/**
 * Runs a piece of work twice and returns the cost of the second time. A virtual machine gives
 * memory that nobody uses back to its host, and gets it again page by page: the first run pays for
 * that, not for what it does.
 */
template <typename Work>
Cost secondCost(Work const& work) {
    work();
    return work();
}

/** The median of one figure of several runs. */
double median(std::vector<Cost> const& costs, double Cost::*figure);

/** Runs a program and reads its standard output. @return whether it succeeded */
bool readChild(std::vector<std::string> const& command, std::string& output);

}  // namespace quenbench
