#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quenbench {

/** Does a case's work once and returns the seconds it measured. */
using Run = std::function<double()>;

/** Something to be measured. */
struct Case {
    std::string name;
    size_t operations;             ///< done in one run; figures are told for one of them
    bool counted;                  ///< instructions, allocations and system calls are counted, too
    std::string group;             ///< cases that are compared have one, and are run in turns
    std::function<Run()> prepare;  ///< sets up; what it makes lives as long as the run does
};

using Cases = std::vector<Case>;

/** Where the figures of a run of the benchmark are found by a case's name, for one operation. */
class Figures {
  public:
    virtual ~Figures() = default;

    /** Median of the repetitions, in seconds; negative when the case was not run. */
    virtual double seconds(std::string const& name) const = 0;

    /** A count, of kind "instructions", "allocations"...; negative when it was not taken. */
    virtual double count(std::string const& kind, std::string const& name) const = 0;
};

}  // namespace quenbench
