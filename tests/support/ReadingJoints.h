// The joints of a reading, checked against the curves that they join.
#pragma once

#include "tests/support/PenPaths.h"

namespace Tessera::Testing {

/// Unit direction of the pen at the curve's first or last end.
inline Geometry::Point HeadingAt(const Geometry::InterpretedCurve& made, Geometry::CurveEnd end) {
    double range[2];
    made.curve->AskRange(range);
    Geometry::Point at;
    Geometry::Vector slope;
    EXPECT_TRUE(made.curve->EvaluateAtParameter(range[end == Geometry::CurveEnd::End ? 1 : 0], at, slope));
    return (made.isReversed ? -1.0 : 1.0) / slope.Length() * Geometry::Point(slope.x, slope.y);
}

/// Every curve has a length, joined ends coincide, they turn as told, and what is called tangent is.
inline void ExpectJoined(const Geometry::InkReading& reading) {
    for (const Geometry::InterpretedCurve& made : reading.curves)
        EXPECT_GT(made.curve->Length(), 1e-3);
    for (const Geometry::InkJoint& joint : reading.joints) {
        const Geometry::InterpretedCurve& before = reading.curves[static_cast<std::size_t>(joint.before)];
        const Geometry::InterpretedCurve& after = reading.curves[static_cast<std::size_t>(joint.after)];
        const Geometry::Point end = EndOf(*before.curve, joint.beforeEnd);
        EXPECT_LT(end.Distance(EndOf(*after.curve, joint.afterEnd)), 1e-9);
        EXPECT_LT(end.Distance(joint.position), 1e-9);
        const Geometry::Point in = HeadingAt(before, joint.beforeEnd);
        const Geometry::Point out = HeadingAt(after, joint.afterEnd);
        const double turn = std::atan2(in.Cross(out), in.Dot(out));
        EXPECT_NEAR(std::remainder(turn - joint.turnDeg * kTurn / 360.0, kTurn), 0.0, 1e-6);
        const bool isPlain = before.curve->GetType() <= Geometry::CurveType_Arc &&
                             after.curve->GetType() <= Geometry::CurveType_Arc;
        EXPECT_EQ(joint.kind == Geometry::JointKind::Tangent, std::fabs(turn) < (isPlain ? 1e-9 : 1e-6));
    }
}

} // namespace Tessera::Testing
