#include "tessera/kernel/EQ.h"

namespace {

constexpr double kInchScale = 25.4; // millimetres to the inch: the start value
constexpr double kUnitScale = 1.0;

double lengthScale = kInchScale;

} // namespace

void EQ_set_MEC(int code) {
    if (code == 1)
        lengthScale = kInchScale;
    else if (code == 2)
        lengthScale = kUnitScale;
}

double EQ_ask_length_tolerance() {
    return lengthScale * 1e-10;
}

double EQ_ask_length_squared_tolerance() {
    return lengthScale * 1e-20 * lengthScale;
}
