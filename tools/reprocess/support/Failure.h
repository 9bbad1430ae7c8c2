#pragma once

#include <stdexcept>
#include <string>

namespace quen::reprocess {

/**
 * Why a file could not be reprocessed: the problem, then advice, as one text for the user. The
 * handler of the file prepends its name.
 */
class Failure : public std::runtime_error {
  public:
    explicit Failure(std::string const& problem) : std::runtime_error(problem) {}
    Failure(std::string const& problem, std::string const& advice)
        : std::runtime_error(problem + "; " + advice) {}
};

}  // namespace quen::reprocess
