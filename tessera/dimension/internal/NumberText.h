// NumberText - a number as the text of a dimension shows it.
#pragma once

namespace Tessera::Dimension {

struct NumberText {
    char text[50]; // longer numbers are cut
    int length;    // characters before the terminating zero
    bool isWhole;  // printed without decimals because the value has none
};

/// Prints with 1 to 9 decimals; for any other number of digits, and whenever the value is whole within
/// 1e-10, as an integer, truncated.
NumberText PrintNumber(double value, int digits);

} // namespace Tessera::Dimension
