#include "tessera/kernel/TOLER.h"

namespace {

double distanceTol = 0.01;  // model units
double angularTolDeg = 0.5; // degrees

} // namespace

double TOLER_ask_distance_tol() {
    return distanceTol;
}

// Both setters are written so that a NaN fails the comparison.
bool TOLER_set_distance_tol(double tol) {
    if (!(tol >= 0.0))
        return false;
    distanceTol = tol;
    return true;
}

double TOLER_ask_angular_tol() {
    return angularTolDeg;
}

bool TOLER_set_angular_tol(double tolDeg) {
    if (!(tolDeg > 0.0 && tolDeg < 180.0))
        return false;
    angularTolDeg = tolDeg;
    return true;
}
