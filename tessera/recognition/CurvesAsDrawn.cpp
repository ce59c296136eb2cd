#include <algorithm>
#include <limits>
#include <span>
#include <vector>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/SingleShapes.h"

// Each piece of the ink is fitted by itself. Between two lines the pen did not stop where the fits end, at
// the break that their rounding leaves, but went round the corner in which they meet.
namespace Tessera::Geometry {

namespace {

constexpr double kNoLimit = std::numeric_limits<double>::infinity();
constexpr double kFarthest = 0.25; // of the shorter line: a corner farther from the ends is none of theirs

std::unique_ptr<Curve> AsDrawn(const InterpretedCurve& made, std::span<Vex::Math::Point2> ink) {
    double largest = 0.0;
    if (made.curve->IsClosed())
        return nullptr;
    if (made.curve->GetType() == CurveType_Arc)
        return RecognizeArc(ink, false, 0.0, kNoLimit, &largest);
    if (made.curve->GetType() != CurveType_Line)
        return nullptr;
    std::unique_ptr<Line> line = RecognizeLine(ink, kNoLimit, &largest);
    if (line && made.isReversed) // it runs as the pen did
        line = std::make_unique<Line>(line->GetEnd(), line->GetStart());
    return line;
}

Point EndOf(const Curve& curve, CurveEnd end) {
    return end == CurveEnd::Start ? curve.GetStart() : curve.GetEnd();
}

void MoveEnd(Curve& line, CurveEnd end, const Point& to) {
    end == CurveEnd::Start ? line.SetLimits(to, line.GetEnd()) : line.SetLimits(line.GetStart(), to);
}

void MeetInCorner(Curve* before, CurveEnd beforeEnd, Curve* after, CurveEnd afterEnd) {
    if (before == nullptr || after == nullptr || before->GetType() != CurveType_Line ||
        after->GetType() != CurveType_Line)
        return;
    std::vector<Point> corner;
    before->Intersect(*after, corner);
    const double reach = kFarthest * std::min(before->Length(), after->Length());
    if (corner.empty() || corner[0].Distance(EndOf(*before, beforeEnd)) > reach ||
        corner[0].Distance(EndOf(*after, afterEnd)) > reach)
        return;
    MoveEnd(*before, beforeEnd, corner[0]);
    MoveEnd(*after, afterEnd, corner[0]);
}

} // namespace

std::vector<std::unique_ptr<Curve>> CurvesAsDrawn(const InkStroke& ink, const InkReading& reading) {
    const long refusals = SM_ask_refusal_count();
    std::vector<std::unique_ptr<Curve>> drawn;
    drawn.reserve(reading.curves.size());
    std::vector<Vex::Math::Point2> pts;
    const int count = static_cast<int>(ink.samples.size());
    for (const InterpretedCurve& made : reading.curves) {
        if (std::max(made.firstSample, made.lastSample) < count) {
            TakeInk(ink.samples, made, pts);
            drawn.push_back(AsDrawn(made, pts));
        } else
            drawn.push_back(nullptr); // of other ink
    }
    for (const InkJoint& joint : reading.joints)
        MeetInCorner(drawn[static_cast<std::size_t>(joint.before)].get(), joint.beforeEnd,
                     drawn[static_cast<std::size_t>(joint.after)].get(), joint.afterEnd);
    if (SM_ask_refusal_count() != refusals)
        Core::ThrowMessage("CurvesAsDrawn - out of memory");
    return drawn;
}

} // namespace Tessera::Geometry
