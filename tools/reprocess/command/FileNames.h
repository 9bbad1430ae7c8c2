#pragma once

#include <optional>
#include <set>
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
    std::string problem;     ///< why the input cannot be read, when that is known
};

/** What a run is to do. */
struct Plan {
    std::vector<Job> jobs;
    std::set<std::string> folders;  ///< of the outputs, to be made where they are missing
};

/**
 * Names the output of every input. One input goes to the output itself when that names a file.
 * Otherwise the output is a folder: a picture there has the name of its input
 * with the extension of its kind, and a number where two inputs share a name. One that was found in
 * a folder lies in the same sub-folder. A folder that could not be searched has no output.
 *
 * @throws Failure when the kind of the output is unclear
 */
Plan planJobs(Options const& options);

/** Makes the folders and their parents. @throws Failure */
void makeFolders(std::set<std::string> const& folders);

}  // namespace quen::reprocess
