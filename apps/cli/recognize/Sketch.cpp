#include "apps/cli/recognize/Sketch.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>

#include "apps/cli/recognize/CurveShapes.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::CurveEnd;
using Geometry::Point;
using Geometry::Vector;

/// Of a curve's size and distance from the origin: ends this close are the same point.
constexpr double kSamePoint = 1e-7;

Point PlaceOf(const SketchEnd& at) {
    return at.end == CurveEnd::Start ? at.curve->GetStart() : at.curve->GetEnd();
}

/// Direction (radians) in which one comes to the curve's end from within the curve.
double DirectionTo(const SketchEnd& at) {
    double limits[2];
    at.curve->AskRange(limits);
    Point place;
    Vector slope;
    at.curve->EvaluateAtParameter(at.end == CurveEnd::Start ? limits[0] : limits[1], place, slope);
    return at.end == CurveEnd::Start ? std::atan2(-slope.y, -slope.x) : std::atan2(slope.y, slope.x);
}

/// The places of the curves that stand, as stroke and curve in it.
class CurvePlaces {
public:
    explicit CurvePlaces(const Sketch& sketch) {
        for (std::size_t s = 0; s < sketch.strokes.size(); ++s) {
            const std::vector<SketchCurve>& curves = sketch.strokes[s].curves;
            for (std::size_t c = 0; c < curves.size(); ++c) {
                places_[curves[c].curve.get()] = {static_cast<int>(s), static_cast<int>(c)};
            }
        }
    }
    const CurvePlace* Find(const Curve* curve) const {
        const auto found = places_.find(curve);
        return found == places_.end() ? nullptr : &found->second;
    }

private:
    std::unordered_map<const Curve*, CurvePlace> places_;
};

/// Where the shape tells the end (else the start) of its curve; null for full circles and ellipses.
Position* ToldEnd(CurveShape& shape, bool isEnd) {
    struct Told {
        bool isEnd;
        Position* operator()(LineShape& line) const { return isEnd ? &line.end : &line.start; }
        Position* operator()(ArcShape& arc) const { return isEnd ? &arc.end : &arc.start; }
        Position* operator()(EllipticArcShape& arc) const { return isEnd ? &arc.end : &arc.start; }
        Position* operator()(SplineShape& spline) const {
            return isEnd ? &spline.poles.back() : &spline.poles.front();
        }
        Position* operator()(CircleShape& /*full*/) const { return nullptr; }
        Position* operator()(EllipseShape& /*full*/) const { return nullptr; }
    };
    return std::visit(Told{isEnd}, shape);
}

/// Ends that meet are told as equal, whatever rounding has made of them.
void EqualizeEnds(RecognizedStroke& stroke) {
    for (const RecognizedJoint& joint : stroke.joints) {
        for (const auto& [curve, isEnd] :
             {std::pair(joint.before, joint.isBeforeEnd), std::pair(joint.after, joint.isAfterEnd)}) {
            if (Position* end = ToldEnd(stroke.curves[curve].shape, isEnd)) {
                *end = joint.position;
            }
        }
    }
}

void DescribeJoints(const Sketch& sketch, const SketchStroke& from, const CurvePlaces& places,
                    RecognizedStroke& to) {
    for (const SketchJoint& joint : from.joints) {
        const CurvePlace* before = places.Find(joint.before.curve);
        const CurvePlace* after = places.Find(joint.after.curve);
        if (before == nullptr || after == nullptr) {
            continue;
        }
        const Point place = PlaceOf(joint.before);
        const double size = std::max(std::hypot(place.x, place.y), joint.before.curve->Length());
        if (!(place.Distance(PlaceOf(joint.after)) <= kSamePoint * size)) {
            continue; // drawn over since
        }
        const double turn = std::remainder(
            DirectionTo(joint.after) + std::numbers::pi - DirectionTo(joint.before), 2.0 * std::numbers::pi);
        to.joints.push_back({before->curve, after->curve, joint.before.end == CurveEnd::End,
                             joint.after.end == CurveEnd::End, joint.kind == Geometry::JointKind::Tangent,
                             sketch.page.ToInk({place.x, place.y}), turn});
    }
}

void DescribeConnections(const Sketch& sketch, const SketchStroke& from, const CurvePlaces& places,
                         RecognizedStroke& to) {
    for (const SketchConnection& connection : from.connections) {
        const CurvePlace* curve = places.Find(connection.end.curve);
        const CurvePlace* earlier = places.Find(connection.earlier);
        if (curve != nullptr && earlier != nullptr) {
            const Point place = PlaceOf(connection.end);
            to.connections.push_back({curve->curve,
                                      connection.end.end == CurveEnd::End,
                                      {*earlier, connection.keyPoint},
                                      sketch.page.ToInk({place.x, place.y})});
        }
    }
}

} // namespace

std::vector<Curve*> Sketch::Curves() const {
    std::vector<Curve*> curves;
    for (const SketchStroke& stroke : strokes) {
        for (const SketchCurve& curve : stroke.curves) {
            curves.push_back(curve.curve.get());
        }
    }
    return curves;
}

SketchCurve* Sketch::Find(const Curve* curve) {
    for (SketchStroke& stroke : strokes) {
        for (SketchCurve& candidate : stroke.curves) {
            if (candidate.curve.get() == curve) {
                return &candidate;
            }
        }
    }
    return nullptr;
}

void Sketch::RenameEnd(SketchEnd old, SketchEnd now) {
    const auto rename = [&](SketchEnd& end) { end = end == old ? now : end; };
    for (SketchStroke& stroke : strokes) {
        for (SketchJoint& joint : stroke.joints) {
            rename(joint.before);
            rename(joint.after);
        }
        for (SketchConnection& connection : stroke.connections) {
            rename(connection.end);
            SketchEnd earlier{connection.earlier, connection.keyPoint == Geometry::SnapPointType_End
                                                      ? CurveEnd::End
                                                      : CurveEnd::Start};
            const bool isEnd = connection.keyPoint == Geometry::SnapPointType_Start ||
                               connection.keyPoint == Geometry::SnapPointType_End;
            if (isEnd && earlier == old) {
                connection.earlier = now.curve;
                connection.keyPoint =
                    now.end == CurveEnd::Start ? Geometry::SnapPointType_Start : Geometry::SnapPointType_End;
            }
        }
    }
}

double MeasureDeviation(const SketchCurve& curve, const InkStroke& ink, const WorkingFrame& page) {
    const auto n = static_cast<int>(ink.samples.size());
    const bool isWhole = curve.retracedBy >= 0;
    const int from = isWhole ? 0 : curve.from;
    const int to = isWhole ? n - 1 : curve.to;
    const int count = to >= from ? to - from : to + n - from;
    double largest = 0.0;
    for (int i = 0; i <= count; ++i) {
        const Sample& sample = ink.samples[static_cast<std::size_t>((from + i) % n)];
        const Position p = page.ToWorking({sample.x, sample.y});
        largest = std::max(largest, curve.curve->DistanceBounded({p.x, p.y}));
    }
    return largest / page.scale;
}

RecognizedCurve DescribeCurve(const SketchCurve& curve, const WorkingFrame& page) {
    return {ShapeOf(*curve.curve, page), curve.from, curve.to, curve.deviation, curve.retracedBy};
}

void DescribeSketch(const Sketch& sketch, RecognizedDrawing& drawing) {
    const CurvePlaces places(sketch);
    for (std::size_t i = 0; i < sketch.strokes.size(); ++i) {
        const SketchStroke& from = sketch.strokes[i];
        RecognizedStroke& to = drawing.strokes[i];
        for (const SketchCurve& curve : from.curves) {
            to.curves.push_back(DescribeCurve(curve, sketch.page));
        }
        DescribeJoints(sketch, from, places, to);
        EqualizeEnds(to);
        DescribeConnections(sketch, from, places, to);
        if (const CurvePlace* retraced = places.Find(from.retraces)) {
            to.retraces = *retraced;
        }
    }
}

} // namespace Tessera::Tool
