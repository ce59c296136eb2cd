#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/dimension/LengthDimension.h"
#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/dimension/internal/MoveCurves.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/kernel/EQ.h"

// Value edits: which side a pick selects, what value a drag of that side gives, which curves follow, and how.

namespace Tessera::Dimension {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kEndTol = 1e-10; // of a relative parameter beyond 0 and 1

/// To the bounded line, to the centre of an arc or ellipse.
double DistanceToParent(const Curve& curve, const Point& p) {
    switch (curve.GetType()) {
    case Geometry::CurveType_Arc:
        return static_cast<const Geometry::Arc&>(curve).GetCenter().Distance(p);
    case Geometry::CurveType_Ellipse:
        return static_cast<const Geometry::Ellipse&>(curve).AskCenter().Distance(p);
    default:
        return curve.DistanceBounded(p);
    }
}

} // namespace

int LengthDimension::ComputeUpdateSide(const Point& p) const {
    const std::vector<Point>* points1 = PointsOf(1);
    const std::vector<Point>* points2 = PointsOf(2);
    if (points1 == nullptr || points2 == nullptr)
        return -1;
    const double t = EQ_ask_length_tolerance();
    const Segment tips{(*points1)[kTip], (*points2)[kTip]};
    const Point text = tips.At(std::clamp(relativeParam_, 0.0, 1.0));
    if (p.Distance(text) < ComputeAnnotationStringLength() * 0.5 - t)
        return 0;
    const double u = tips.ParamOf(p);
    if (-kEndTol < u && u < 1.0 + kEndTol)
        return p.Distance(tips.end) - t <= p.Distance(tips.start) ? 2 : 1;
    return u >= -kEndTol ? 2 : 1;
}

double LengthDimension::ComputeNewValue(const Point& p, int side) const {
    const std::vector<Point>* moving = PointsOf(side);
    const std::vector<Point>* fixed = PointsOf(3 - side);
    if ((side != 1 && side != 2) || moving == nullptr || fixed == nullptr)
        return GetAnnotation();
    const double t = EQ_ask_length_tolerance();
    const Point& m = (*moving)[kTip];
    const Point& o = (*fixed)[kTip];
    Vector v(o, m);
    if (v.LengthSq() > t * t)
        v = v / v.Length();
    if (v.Dot(Vector(o, p)) < t)
        return GetAnnotation(); // dragged behind the fixed end
    return GetAnnotation() + v.Dot(Vector(m, p));
}

void LengthDimension::GetUpdateCurves(int side, std::vector<Curve*>& curves) const {
    std::vector<Curve*> parents;
    GetParentCurves(parents);
    if (parents.size() == 1) {
        if (parents.front()->GetType() == Geometry::CurveType_Line)
            curves.push_back(parents.front());
        return;
    }
    if (side == 0)
        curves.insert(curves.end(), parents.begin(), parents.end());
    const std::vector<Point>* points = PointsOf(side);
    if (points == nullptr)
        return;
    Curve* nearest = nullptr;
    double least = std::numeric_limits<double>::max();
    for (Curve* parent : parents) {
        if (!HasRecord(parent))
            continue;
        const double distance = DistanceToParent(*parent, (*points)[kExtensionStart]);
        if (distance < least) {
            least = distance;
            nearest = parent;
        }
    }
    if (nearest != nullptr)
        curves.push_back(nearest);
}

// --- A typed value

void LengthDimension::ApplyTypedValue() {
    Segment measured;
    const double value = GetAnnotation();
    if (!AskMeasured(measured) || !std::isfinite(value) || !(value > EQ_ask_length_tolerance()))
        return;
    const double growth = value - measured.Length();
    if (growth != 0.0)
        GrowParents(growth, measured.Direction(AskGrowthAxis()));
}

void LengthDimension::GrowParents(double growth, const Vector& along) {
    MoveLineEnds(*line_, -growth * ShareOf(1) * along, growth * ShareOf(2) * along);
}

} // namespace Tessera::Dimension
