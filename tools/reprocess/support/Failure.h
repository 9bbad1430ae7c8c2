#pragma once

#include <stdexcept>
#include <string>

namespace quen::reprocess {

/**
 * Why a file could not be reprocessed: what was wrong, then what to do about it, as one text for
 * the user. Whoever handles the file puts its name in front.
 */
class Failure : public std::runtime_error {
  public:
    explicit Failure(std::string const& problem) : std::runtime_error(problem) {}
    Failure(std::string const& problem, std::string const& advice)
        : std::runtime_error(problem + "; " + advice) {}
};

}  // namespace quen::reprocess
