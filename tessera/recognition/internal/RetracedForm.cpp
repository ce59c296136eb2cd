// What remains of the old curve and the ink are put into one row of points; the ink's ends are drawn onto the
// remainder, less and less with the distance from them. One fit over the row gives the new form.
#include "tessera/recognition/internal/RetracedForm.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/LSFIT.h"
#include "tessera/recognition/internal/FreeForm.h"

namespace Tessera::Geometry {

namespace {

constexpr double kBlendShare = 0.25; // of the covered length, at either end
constexpr double kBlendSlope = 3.0;  // the blend is so many times longer than its offset
constexpr double kBlendMost = 0.5;   // of the covered length
constexpr double kFreeShare = 0.002; // of the diagonal: tolerance of free forms; the remainder must stay
constexpr int kSmoothings = 2;       // takes the tremor out of the ink before a fit so close
constexpr double kTurn = 2.0 * std::numbers::pi;

// The points that the new form follows, in the old one's direction.
struct Row {
    std::vector<Point> pts;
    bool isWhole = false; // nothing remains of the old curve
};

void Smooth(std::vector<Point>& pts) {
    for (int round = 0; round < kSmoothings; ++round) {
        Point before = pts.front();
        for (std::size_t i = 1; i + 1 < pts.size(); ++i) {
            const Point at = pts[i];
            pts[i] = 0.25 * before + 0.5 * at + 0.25 * pts[i + 1];
            before = at;
        }
    }
}

// Falls from 1 to 0 without a kink.
double Fade(double x) {
    return x >= 1.0 ? 0.0 : (1.0 - x) * (1.0 - x) * (1.0 + 2.0 * x);
}

// Moves the ink's end onto the curve, and what lies within the blend part of the way.
void BlendEnd(const CurveTrack& track, const Retrace& retrace, bool atStart, std::vector<Point>& ink) {
    const TrackFoot& foot = atStart ? retrace.feet.front() : retrace.feet.back();
    const Point offset = track.At(foot.along) - (atStart ? ink.front() : ink.back());
    const double covered = retrace.CoveredLength();
    const double blend =
        std::clamp(kBlendSlope * offset.Length(), kBlendShare * covered, kBlendMost * covered);
    for (std::size_t i = 0; i < ink.size(); ++i)
        ink[i] += Fade(std::fabs(retrace.feet[i].along - foot.along) / blend) * offset;
}

// A closed curve drawn again all round: the drift between the ends is spread over the round, and what
// overlaps is left out.
void CloseRound(const CurveTrack& track, const Retrace& retrace, std::vector<Point>& ink) {
    const double start = retrace.feet.front().along;
    std::size_t count = ink.size();
    while (count > 4 && retrace.feet[count - 2].along - start >= track.Length())
        --count;
    ink.resize(count);
    const auto offset = [&](std::size_t i) { return ink[i] - track.At(retrace.feet[i].along); };
    const Point drift = offset(0) - offset(count - 1);
    for (std::size_t i = 0; i < count; ++i)
        ink[i] += (static_cast<double>(i) / static_cast<double>(count - 1)) * drift;
}

// Points of the old curve between two lengths, both left out.
void AppendOld(const CurveTrack& track, double from, double to, double spacing, std::vector<Point>& pts) {
    const int parts = static_cast<int>(std::ceil((to - from) / spacing));
    for (int i = 1; i < parts; ++i)
        pts.push_back(track.At(from + (to - from) * i / parts));
}

Row MakeRow(const CurveTrack& track, const Retrace& retrace) {
    const double from = retrace.feet.front().along;
    const double to = retrace.feet.back().along;
    const double spacing = retrace.CoveredLength() / static_cast<double>(retrace.ink.size() - 1);
    std::vector<Point> ink = retrace.ink;
    Smooth(ink);
    Row row;
    if (track.isClosed) {
        const double rest = track.Length() - (to - from);
        row.isWhole = rest <= retrace.reach;
        if (row.isWhole) {
            CloseRound(track, retrace, ink);
            row.pts = std::move(ink);
            return row;
        }
        BlendEnd(track, retrace, true, ink);
        BlendEnd(track, retrace, false, ink);
        row.pts.push_back(track.At(from - 0.5 * rest)); // the seam lies in the middle of what remains
        AppendOld(track, from - 0.5 * rest, from, spacing, row.pts);
        row.pts.insert(row.pts.end(), ink.begin(), ink.end());
        AppendOld(track, to, to + 0.5 * rest, spacing, row.pts);
        row.pts.push_back(row.pts.front());
        return row;
    }
    const bool toStart = from <= retrace.reach;
    const bool toEnd = track.Length() - to <= retrace.reach;
    row.isWhole = toStart && toEnd;
    if (!toStart) {
        BlendEnd(track, retrace, true, ink);
        row.pts.push_back(track.pts.front());
        AppendOld(track, 0.0, from, spacing, row.pts);
    }
    if (!toEnd)
        BlendEnd(track, retrace, false, ink);
    row.pts.insert(row.pts.end(), ink.begin(), ink.end());
    if (!toEnd) {
        AppendOld(track, to, track.Length(), spacing, row.pts);
        row.pts.push_back(track.pts.back());
    }
    return row;
}

std::vector<Vex::Math::Point2> Records(const std::vector<Point>& pts) {
    std::vector<Vex::Math::Point2> records;
    records.reserve(pts.size());
    for (const Point& p : pts)
        records.push_back({p.x, p.y});
    return records;
}

std::unique_ptr<Curve> FitLine(const std::vector<Point>& pts) {
    std::vector<Vex::Math::Point2> records = Records(pts);
    Vex::Math::Point2 on{};
    Vex::Math::Vector2 normal{};
    int status = 1;
    double err[3];
    LSFIT_line_to_points_2d(records.data(), static_cast<int>(records.size()), &on, &normal, &status, err);
    if (status != 0)
        return nullptr;
    const Point centre(on.x, on.y);
    const Point along(-normal.y, normal.x);
    const auto foot = [&](const Point& p) { return centre + (p - centre).Dot(along) * along; };
    return std::make_unique<Line>(foot(pts.front()), foot(pts.back()));
}

std::unique_ptr<Curve> FitArc(const std::vector<Point>& pts, bool isClosed) {
    std::vector<Vex::Math::Point2> records = Records(pts);
    Vex::Math::Point2 middle{};
    double radius = 0.0;
    int status = 1;
    double err[3];
    LSFIT_circle_to_points_2d(records.data(), static_cast<int>(records.size()), &middle, &radius, &status,
                              err);
    if (status != 0)
        return nullptr;
    const Point centre(middle.x, middle.y);
    auto arc = std::make_unique<Arc>(centre, radius);
    if (!isClosed)
        arc->SetLimits(pts.front(), pts.back());
    return arc;
}

std::unique_ptr<Curve> FitEllipse(const std::vector<Point>& pts, const Ellipse& old) {
    std::vector<Vex::Math::Point2> records = Records(pts);
    Vex::Math::Point2 middle{};
    double radii[2];
    double rotation = 0.0;
    int status = 1;
    double err[3];
    LSFIT_ellipse_to_points_2d(records.data(), static_cast<int>(records.size()), &middle, &radii[0],
                               &radii[1], &rotation, &status, err);
    if (status != 0)
        return nullptr;
    const Vector axis = old.AskDirection();
    if (std::cos(rotation) * axis.x + std::sin(rotation) * axis.y < 0.0)
        rotation += std::numbers::pi; // the end of the axis that a user sees stays where it was
    double centre[2] = {middle.x, middle.y};
    auto ellipse = std::make_unique<Ellipse>(centre, radii, rotation, 0.0, kTurn);
    if (!old.IsClosed())
        ellipse->SetLimits(pts.front(), pts.back());
    return ellipse;
}

std::unique_ptr<Curve> FitSameKind(const Curve& old, const std::vector<Point>& pts) {
    switch (old.GetType()) {
    case CurveType_Line:
        return FitLine(pts);
    case CurveType_Arc:
        return FitArc(pts, old.IsClosed());
    case CurveType_Ellipse:
        return FitEllipse(pts, static_cast<const Ellipse&>(old));
    default:
        return nullptr;
    }
}

bool IsWithin(const Curve& curve, const std::vector<Point>& pts, double tolerance) {
    return std::all_of(pts.begin(), pts.end(),
                       [&](const Point& p) { return curve.DistanceBounded(p) <= tolerance; });
}

} // namespace

std::unique_ptr<Curve> MakeRetracedForm(const Curve& old, const CurveTrack& track, const Retrace& retrace,
                                        double tolerance, bool mayChangeKind) {
    const Row row = MakeRow(track, retrace);
    std::unique_ptr<Curve> form = FitSameKind(old, row.pts);
    if (form && (row.isWhole || IsWithin(*form, row.pts, tolerance)))
        return form;
    if (!mayChangeKind && old.GetType() != CurveType_Spline)
        return nullptr;
    return FitFreeForm(row.pts, track.isClosed, kFreeShare * DiagonalOf(row.pts));
}

} // namespace Tessera::Geometry
