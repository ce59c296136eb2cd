#include "tessera/host/internal/ScriptorTesseraRecog.h"

#include <algorithm>
#include <cmath>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/host/internal/Services.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Host {

using Geometry::Curve;
using Geometry::Point;
using Geometry::RecognizedGeometry;

namespace {

// The host's own conversion from radians, to the digits it uses.
constexpr double kDegreesPerRadian = 57.2958;
constexpr double kSmallestCornerDeg = 60.0;
constexpr double kLargestCornerDeg = 120.0;

tagGPosition2d ToPosition(const Point& p) {
    return Services().buildPosition2d(Services().context, p.x, p.y);
}

// --- Recognition results and their owner

using Results = std::vector<RecognizedGeometry*>;

/// What a poly-line is recognised as.
class RecognizedPolyLine {
public:
    explicit RecognizedPolyLine(const std::vector<InputPoint>& points) {
        Geometry::Stroke stroke;
        for (const InputPoint& p : points) {
            stroke.AddPoint(Geometry::StrokePoint(p.x, p.y, 0.0));
        }
        recognizer_.Recognize(stroke, true, Geometry::CurveType_Line);
        Geometry::CloseRoundStroke(recognizer_);
    }
    RecognizedPolyLine(const RecognizedPolyLine&) = delete;
    RecognizedPolyLine& operator=(const RecognizedPolyLine&) = delete;
    ~RecognizedPolyLine() {
        for (const RecognizedGeometry* result : recognizer_.GetResults()) {
            delete &result->GetResult();
            delete result;
        }
    }

    const Results& GetResults() { return recognizer_.GetResults(); }

private:
    Geometry::SketchRecognizer recognizer_;
};

// --- Rectangle gate

tagGVector2d EndToStart(const SideSegment& side) {
    return Services().buildVector2d(Services().context, side.start.x - side.end.x, side.start.y - side.end.y);
}

bool IsNearlySquareCorner(const SideSegment& a, const SideSegment& b) {
    const tagGVector2d from = EndToStart(a);
    const tagGVector2d to = EndToStart(b);
    const double angleDeg =
        std::fabs(Services().giveAngle(Services().context, &from, &to) * kDegreesPerRadian);
    return kSmallestCornerDeg < angleDeg && angleDeg < kLargestCornerDeg;
}

/// Meeting point of two infinite lines, rounded to whole units; false when they are parallel.
bool IntersectRounded(const SideSegment& a, const SideSegment& b, tagGPosition2d& out) {
    const double ax = a.end.x - a.start.x;
    const double ay = a.end.y - a.start.y;
    const double bx = b.end.x - b.start.x;
    const double by = b.end.y - b.start.y;
    const double det = ax * by - ay * bx;
    if (det == 0.0) {
        return false;
    }
    const double s = ((b.start.x - a.start.x) * by - (b.start.y - a.start.y) * bx) / det;
    out = {std::round(a.start.x + s * ax), std::round(a.start.y + s * ay)};
    return true;
}

bool IsOutsideRange(double value, double a, double b) {
    return value < std::min(a, b) || value > std::max(a, b);
}

// Judged on y alone; x decides only at the height of one of the ends.
bool IsOutsideSide(const tagGPosition2d& p, const SideSegment& side) {
    if (IsOutsideRange(p.y, side.start.y, side.end.y)) {
        return true;
    }
    const bool atAnEndHeight = p.y == side.start.y || p.y == side.end.y;
    return atAnEndHeight && IsOutsideRange(p.x, side.start.x, side.end.x);
}

bool MeetsOutside(const tagGPosition2d& from, const tagGPosition2d& to, const SideSegment& side) {
    tagGPosition2d meeting{};
    return IntersectRounded({from, to}, side, meeting) && IsOutsideSide(meeting, side);
}

bool TakeAsRectangle(const Results& results, ConstructList& list, RectangleSink& sink) {
    if (results.size() != 4) {
        return false;
    }
    SideSegment sides[4];
    for (int i = 0; i < 4; ++i) {
        const Curve& curve = results[i]->GetResult();
        if (curve.GetType() != Geometry::CurveType_Line || curve.IsZeroLength()) {
            return false;
        }
        sides[i] = {ToPosition(curve.GetStart()), ToPosition(curve.GetEnd())};
    }
    return IsRectangleCandidate(sides) && AddTesseraRectangleToConstructList(sides, list, sink) >= 0;
}

// --- One entry for each curve

struct OwnedPoints {
    std::vector<Point*> points;
    ~OwnedPoints() { Point::DeletePoints(points); }
};

/// Turns curves into entries and remembers where the drawing has got to.
class EntryWriter {
public:
    explicit EntryWriter(ConstructList& list) : list_(list) {}

    void Append(const Curve& curve) {
        switch (curve.GetType()) {
        case Geometry::CurveType_Line:
            AppendLine(curve);
            break;
        case Geometry::CurveType_Arc:
            curve.IsClosed() ? AppendCircle(static_cast<const Geometry::Arc&>(curve)) : AppendArc(curve);
            break;
        case Geometry::CurveType_Ellipse:
            AppendEllipse(static_cast<const Geometry::Ellipse&>(curve));
            break;
        case Geometry::CurveType_Spline:
            AppendSpline(static_cast<const Geometry::Spline&>(curve));
            break;
        default:
            break;
        }
    }

private:
    ConstructEntry& NewEntry(ConstructKind_e kind) {
        list_.emplace_back().kind = kind;
        return list_.back();
    }

    void AppendLine(const Curve& line) {
        ConstructEntry& entry = NewEntry(ConstructKind_Line);
        entry.p0 = ToPosition(line.GetStart());
        entry.p1 = ToPosition(line.GetEnd());
        previousLast_ = line.GetEnd();
    }

    // The end nearer to where the drawing has got to comes first.
    void AppendArc(const Curve& arc) {
        Point start = arc.GetStart();
        Point end = arc.GetEnd();
        const bool exchanged = previousLast_.Distance2(start) > previousLast_.Distance2(end);
        if (exchanged) {
            std::swap(start, end);
        }
        ConstructEntry& entry = NewEntry(ConstructKind_OpenArc);
        entry.p0 = ToPosition(start);
        entry.p1 = ToPosition(arc.GetMidPoint());
        entry.p2 = ToPosition(end);
        entry.endsExchanged = exchanged;
        previousLast_ = end;
    }

    void AppendCircle(const Geometry::Arc& circle) {
        ConstructEntry& entry = NewEntry(ConstructKind_Circle);
        entry.p0 = ToPosition(circle.GetCenter());
        entry.p1.x = circle.GetRadius();
    }

    void AppendEllipse(const Geometry::Ellipse& ellipse) {
        if (ellipse.IsClosed()) {
            ConstructEntry& entry = NewEntry(ConstructKind_Ellipse);
            entry.p0 = ToPosition(ellipse.AskCenter());
            entry.p1 = ToPosition(ellipse.GetMajorRadiusPoint(1.0));
            entry.p2 = ToPosition(ellipse.GetMinorRadiusPoint(1.0));
        } else {
            ConstructEntry& entry = NewEntry(ConstructKind_EllipticArc);
            entry.p0 = ToPosition(ellipse.GetStart());
            entry.p1 = ToPosition(ellipse.GetEnd());
            entry.p2 = ToPosition(ellipse.GetMidPoint());
            entry.p3 = ToPosition(ellipse.AskCenter());
            entry.axes[0] = ToPosition(ellipse.GetMajorRadiusPoint(1.0));
            entry.axes[1] = ToPosition(ellipse.GetMinorRadiusPoint(1.0));
        }
    }

    void AppendSpline(const Geometry::Spline& spline) {
        int poleCount = 0;
        int order = 0;
        int periodic = 0;
        OwnedPoints poles;
        ConstructEntry& entry = NewEntry(ConstructKind_BSpline);
        spline.AskSplineData(poleCount, order, periodic, entry.knots, poles.points);
        entry.degree = static_cast<std::uint8_t>(order - 1);
        entry.periodic = periodic;
        for (const Point* pole : poles.points) {
            entry.poles.push_back({pole->x, pole->y});
        }
        const BCURVE_DATA& definition = Geometry::Definition(*spline.AskCurveData());
        for (int i = 0; definition.polynomial == 0 && i < definition.numPoles; ++i) {
            entry.weights.push_back(definition.poles[i][3]);
        }
        previousLast_ = spline.GetEnd();
    }

    ConstructList& list_;
    Point previousLast_;
};

} // namespace

void BuildConstructList(const std::vector<InputPoint>& points, ConstructList& list, RectangleSink* sink) {
    list.clear();
    const bool isFinite = std::all_of(points.begin(), points.end(), [](const InputPoint& p) {
        return std::isfinite(p.x) && std::isfinite(p.y);
    });
    if (points.size() < 2 || !isFinite) {
        return;
    }
    RecognizedPolyLine recognized(points);
    const Results& results = recognized.GetResults();
    if (results.empty() || (sink != nullptr && TakeAsRectangle(results, list, *sink))) {
        return;
    }
    EntryWriter writer(list);
    for (const RecognizedGeometry* result : results) {
        if (!result->GetResult().IsZeroLength()) {
            writer.Append(result->GetResult());
        }
    }
}

void AppendCurvesToConstructList(std::span<const Curve* const> curves, ConstructList& list) {
    EntryWriter writer(list);
    for (const Curve* curve : curves) {
        writer.Append(*curve);
    }
}

bool IsRectangleCandidate(const SideSegment sides[4]) {
    for (int i = 0; i < 4; ++i) {
        if (!IsNearlySquareCorner(sides[i], sides[(i + 1) % 4])) {
            return false;
        }
    }
    return MeetsOutside(sides[0].start, sides[2].end, sides[1]) &&
           MeetsOutside(sides[1].start, sides[3].end, sides[2]);
}

std::int32_t AddTesseraRectangleToConstructList(const SideSegment sides[4], ConstructList& list,
                                                RectangleSink& sink) {
    // Turned back by its quarters, every side points the way of the first; the sum is their mean direction.
    const double firstTurn = (sides[0].end.x - sides[0].start.x) * (sides[1].end.y - sides[1].start.y) -
                             (sides[0].end.y - sides[0].start.y) * (sides[1].end.x - sides[1].start.x);
    const double sense = firstTurn < 0.0 ? -1.0 : 1.0;
    double ux = 0.0;
    double uy = 0.0;
    double quarterCos = 1.0;
    double quarterSin = 0.0;
    for (int i = 0; i < 4; ++i) {
        const double dx = sides[i].end.x - sides[i].start.x;
        const double dy = sides[i].end.y - sides[i].start.y;
        const double turnedX = quarterCos * dx - quarterSin * dy;
        const double turnedY = quarterSin * dx + quarterCos * dy;
        if (i > 0 && turnedX * ux + turnedY * uy <= 0.0) {
            return kErrorFail;
        }
        ux += turnedX;
        uy += turnedY;
        const double nextCos = sense * quarterSin;
        quarterSin = -sense * quarterCos;
        quarterCos = nextCos;
    }
    const double length = std::hypot(ux, uy);
    if (length == 0.0) {
        return kErrorFail;
    }
    ux /= length;
    uy /= length;

    // Sides 0 and 2 run along u and keep their height over it; sides 1 and 3 keep their place along u.
    double along[4];
    double height[4];
    for (int i = 0; i < 4; ++i) {
        const double midX = 0.5 * (sides[i].start.x + sides[i].end.x);
        const double midY = 0.5 * (sides[i].start.y + sides[i].end.y);
        along[i] = midX * ux + midY * uy;
        height[i] = midY * ux - midX * uy;
    }
    Rectangle rectangle{};
    for (int i = 0; i < 4; ++i) {
        const int next = (i + 1) % 4;
        const double a = i % 2 == 0 ? along[next] : along[i];
        const double h = i % 2 == 0 ? height[i] : height[next];
        rectangle.corners[i] = {a * ux - h * uy, a * uy + h * ux};
    }
    for (int i = 0; i < 4; ++i) {
        ConstructEntry& entry = list.emplace_back();
        entry.kind = ConstructKind_Line;
        entry.p0 = rectangle.corners[(i + 3) % 4];
        entry.p1 = rectangle.corners[i];
    }
    sink.rectangles.push_back(rectangle);
    return kOk;
}

} // namespace Tessera::Host
