#pragma once

#include <string>
#include <vector>

#include "inputs/InputKind.h"
#include "inputs/InputOptions.h"

namespace quen::reprocess {

/** The names of options that are given and that no input of these kinds makes use of. */
std::vector<std::string> unusedOptions(InputOptions const& options,
                                       std::vector<InputKind> const& kinds);

}  // namespace quen::reprocess
