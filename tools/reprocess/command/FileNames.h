#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command/Options.h"

namespace quen::reprocess {

/** What a file of this name holds; none when its ending does not tell. */
std::optional<OutputKind> outputKindOf(std::string const& path);

/** One input and where its picture goes. */
struct Job {
    std::string input;
    std::string output;
    OutputKind kind;
};

/**
 * Where each input's picture goes: to the output itself when one input meets a file's name,
 * otherwise into a folder, under the input's name with the ending of what is made. Inputs whose
 * names would meet there are told apart by a number. The folder is made when it is missing.
 *
 * @throws Failure when the output does not tell what to make, or the folder cannot be made
 */
std::vector<Job> planJobs(Options const& options);

}  // namespace quen::reprocess
