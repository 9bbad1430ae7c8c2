#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command/Options.h"

namespace quen::reprocess {

/** The kind of output that a file name asks for; none for another extension. */
std::optional<OutputKind> outputKindOf(std::string const& path);

/** One input, and the output to make of it. */
struct Job {
    std::string input;
    std::string output;
    OutputKind kind;
    bool isSkipped = false;  ///< the output is there, and is to stay
};

/**
 * Names the output of every input. One input goes to the output itself when that names a file.
 * Otherwise the output is a folder, created when missing: a picture there has the name of its input
 * with the extension of its kind, and a number where two inputs share a name. One that was found in
 * a folder lies in the same sub-folder.
 *
 * @throws Failure when the kind of the output is unclear, the folder cannot be created, or an
 *         output would take the place of another input
 */
std::vector<Job> planJobs(Options const& options);

}  // namespace quen::reprocess
