#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace quenbench {

/** The limit of a ratio. */
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
    std::string against;  ///< name and figure of a limit or a peer, measured in the same run
    double ratio;         ///< negative for none
    Goal goal;
};

/** Prints the head of a table. Columns have the same width in every program. */
void printTableHead(std::ostream& out);
void printRow(std::ostream& out, Row const& row);

/** "12.3 us": three digits of a time given in seconds. */
std::string timeText(double seconds);

/** "12.34": a number with two decimals. */
std::string decimalText(double value);

/** A count with as many digits as it needs: "12", "12.5", "84.1 k". */
std::string countText(double count);

}  // namespace quenbench
