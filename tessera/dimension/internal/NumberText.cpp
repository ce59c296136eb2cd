#include "tessera/dimension/internal/NumberText.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace Tessera::Dimension {
namespace {

constexpr double kWholeTol = 1e-10;        // how far from an integer a whole value may lie; model units
constexpr double kLargestInteger = 9.2e18; // conversions to 64 bits are defined up to here

} // namespace

NumberText PrintNumber(double value, int digits) {
    NumberText out{};
    const double whole = std::trunc(value);
    out.isWhole = std::fabs(value - whole) <= kWholeTol;
    const bool asInteger = out.isWhole || digits < 1 || digits > 9;
    if (!asInteger)
        std::snprintf(out.text, sizeof out.text, "%.*f", digits, value);
    else if (std::fabs(whole) < kLargestInteger)
        std::snprintf(out.text, sizeof out.text, "%lld", static_cast<long long>(whole));
    else
        std::snprintf(out.text, sizeof out.text, "%.0f", whole); // also what is not a number
    out.length = static_cast<int>(std::strlen(out.text));
    return out;
}

} // namespace Tessera::Dimension
