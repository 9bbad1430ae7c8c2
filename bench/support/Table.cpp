#include "support/Table.h"

#include <cstdio>
#include <ostream>

namespace quenbench {

namespace {

constexpr int kWidths[] = {38, 46, 12, 30, 7, 7, 14};

std::string number(char const* format, double value) {
    char text[32];
    snprintf(text, sizeof(text), format, value);
    return text;
}

void printCells(std::ostream& out, std::string const (&cells)[7]) {
    for (size_t i = 0; i < 7; ++i) {
        size_t const width = static_cast<size_t>(kWidths[i]);
        size_t const used = cells[i].size();
        out << "| " << cells[i] << std::string(used < width ? width - used : 0, ' ') << ' ';
    }
    out << "|\n";
}

std::string goalText(Goal goal) {
    switch (goal.kind) {
        case Goal::Kind::AtMost:
            return number("<= %.4g", goal.limit);
        case Goal::Kind::AtLeast:
            return number(">= %.4g", goal.limit);
        case Goal::Kind::None:
            break;
    }
    return "-";
}

/** How far a goal is missed, in percent. */
std::string verdict(double ratio, Goal goal) {
    if (goal.kind == Goal::Kind::None || ratio < 0) {
        return "-";
    }
    double const over = goal.kind == Goal::Kind::AtMost ? ratio - goal.limit : goal.limit - ratio;
    if (over <= 0) {
        return "met";
    }
    return goal.limit == 0 ? "missed" : number("missed, %.0f %%", 100 * over / goal.limit);
}

}  // namespace

void printTableHead(std::ostream& out) {
    printCells(out, {"what", "work", "ours", "limit or peer", "ratio", "goal", "met"});
    for (int const width : kWidths) {
        out << '|' << std::string(static_cast<size_t>(width) + 2, '-');
    }
    out << "|\n";
}

void printRow(std::ostream& out, Row const& row) {
    printCells(out, {row.what, row.work, row.ours, row.against,
                     row.ratio < 0 ? "-" : number("%.2f", row.ratio), goalText(row.goal),
                     verdict(row.ratio, row.goal)});
}

std::string timeText(double seconds) {
    struct {
        double scale;
        char const* format;
    } const units[] = {{1, "%.3g s"}, {1e3, "%.3g ms"}, {1e6, "%.3g us"}, {1e9, "%.3g ns"}};
    for (auto const& unit : units) {
        if (seconds * unit.scale >= 1) {
            return number(unit.format, seconds * unit.scale);
        }
    }
    return number("%.2f ns", seconds * 1e9);
}

std::string decimalText(double value) {
    char text[32];
    snprintf(text, sizeof(text), "%.2f", value);
    return text;
}

std::string countText(double count) {
    return count < 1e4 ? number("%.4g", count) : number("%.3g k", count / 1e3);
}

}  // namespace quenbench
