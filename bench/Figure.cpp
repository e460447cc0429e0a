#include "Figure.h"

#include <cstdio>

void Figure::print() const
{
    const char* const verdict = aim <= 0.0 ? "" : value <= aim ? "reached" : "MISSED";
    std::printf("%9.2f %-4s", value, unit);
    if (aim > 0.0) {
        std::printf("aim %4g, %-8s", aim, verdict);
    } else {
        std::printf("%-18s", "");
    }
    std::printf("%s\n", what.c_str());
    std::fflush(stdout);
}
