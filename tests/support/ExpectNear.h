// Plane points of every kind, compared within a tolerance.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace Tessera::Testing {

/// Two coordinates: given, or those of anything that has x and y.
struct Xy {
    Xy(double x0, double y0) : x(x0), y(y0) {}
    template <class P>
    Xy(const P& p) : x(p.x), y(p.y) {}
    double x, y;
};

inline void ExpectNear(const Xy& actual, const Xy& expected, double tol = 1e-9,
                       const std::string& what = "") {
    EXPECT_NEAR(actual.x, expected.x, tol) << what;
    EXPECT_NEAR(actual.y, expected.y, tol) << what;
}

} // namespace Tessera::Testing
