#pragma once

#include <string>

/// One line of a report: "  2.31 s    aim 3, reached  what it is". Where there is an aim, it is the
/// most that the figure is to be.
struct Figure {
    double value{0.0};
    const char* unit{""};
    std::string what;
    double aim{0.0}; ///< 0: there is none

    void print() const;
};
