#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quenbench {

/** Runs a case once and returns the seconds measured. */
using Run = std::function<double()>;

/** A case to measure. */
struct Case {
    std::string name;
    size_t operations;  ///< per run; figures are per operation
    bool counted;       ///< whether instructions, allocations and system calls are counted
    std::string group;  ///< cases of one group are compared, and run in turns
    std::function<Run()> prepare;  ///< sets up; its state lives as long as the run
};

using Cases = std::vector<Case>;

/** The figures of a benchmark run by name of the case, per operation. */
class Figures {
  public:
    virtual ~Figures() = default;

    /** Median of the repetitions in seconds; negative when the case did not run. */
    virtual double seconds(std::string const& name) const = 0;

    /** A count, of kind "instructions", "allocations"...; negative when it was not counted. */
    virtual double count(std::string const& kind, std::string const& name) const = 0;
};

}  // namespace quenbench
