#pragma once

#include <string>
#include <vector>

namespace quenbench {

/** What a process cost from its start to its end. */
struct Cost {
    double seconds = 0;           ///< by the clock
    double processorSeconds = 0;  ///< of all its threads, the kernel's work for it included
    double peakBytes = 0;         ///< memory resident at once
};

/**
 * Runs a program and waits for it; what it prints is thrown away but for its errors.
 *
 * A child's peak counts from the process it is made from: whoever measures must be small itself.
 *
 * @return false when it could not be run, or failed
 */
bool runChild(std::vector<std::string> const& command, Cost& cost);

/** Runs a program and reads what it prints. @return whether it ended well */
bool readChild(std::vector<std::string> const& command, std::string& output);

}  // namespace quenbench
