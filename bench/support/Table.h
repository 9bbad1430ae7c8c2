#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace quenbench {

/** What a ratio is held to. */
struct Goal {
    enum class Kind { None, AtMost, AtLeast };

    static Goal none() { return {Kind::None, 0}; }
    static Goal atMost(double limit) { return {Kind::AtMost, limit}; }
    static Goal atLeast(double limit) { return {Kind::AtLeast, limit}; }

    Kind kind;
    double limit;
};

/** One line of the table. */
struct Row {
    std::string what;
    std::string work;     ///< sizes, entries
    std::string ours;     ///< with its unit
    std::string against;  ///< a limit or a peer, measured in the same run, with its name
    double ratio;         ///< negative: there is none
    Goal goal;
};

/** Columns are of one width in every program that prints one, so that tables can follow. */
void printTableHead(std::ostream& out);
void printRow(std::ostream& out, Row const& row);

/** "12.3 us": three digits of a time given in seconds. */
std::string timeText(double seconds);

/** A count with as many digits as it needs: "12", "12.5", "84.1 k". */
std::string countText(double count);

}  // namespace quenbench
