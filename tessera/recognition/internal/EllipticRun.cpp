#include "tessera/recognition/internal/EllipticRun.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/EllipseEvidence.h"

namespace Tessera::Geometry {

namespace {

constexpr int kFewest = 12; // points, of which six numbers are told

// In the frame of the whole.
InkPath PartOf(const InkPath& path, int first, int last) {
    InkPath part;
    part.pts.assign(path.pts.begin() + first, path.pts.begin() + last + 1);
    part.source.assign(path.source.begin() + first, path.source.begin() + last + 1);
    part.step = path.step;
    part.length = path.step * (last - first);
    part.scale = path.scale;
    part.closingLength = path.closingLength;
    part.origin = path.origin;
    return part;
}

} // namespace

std::optional<EllipticRun> FindEllipticRun(const PricedPath& ink, int first, int last) {
    const int trim = TrimOf(last - first);
    if (last - first < kFewest)
        return std::nullopt;
    const std::optional<EllipseEvidence> inner = FindEllipse(PartOf(ink.path, first + trim, last - trim));
    if (!inner)
        return std::nullopt;
    const InkPath part = PartOf(ink.path, first, last);
    const EllipseEvidence whole = EvidenceBeside(part, inner->centre, inner->a, inner->b, inner->angle);
    std::optional<EllipticArc> arc = FindEllipticArc(PricedPath(part), whole);
    if (!arc)
        return std::nullopt;
    EllipticRun run{first, last, *arc, {arc->description.price - kEllipticPrice + kEllipticRunPrice, 0.0}};
    for (const double d : inner->distance)
        run.description.sumSq += d * d;
    for (const double d : whole.distance)
        run.farthest = std::max(run.farthest, std::fabs(d));
    return run;
}

PricedPiece BendAt(const EllipticRun& run, bool atEnd) {
    const EllipticArc& arc = run.arc;
    const double t = atEnd != arc.isReversed ? arc.to : arc.from;
    const double sense = arc.isReversed ? -1.0 : 1.0;
    const double c = std::cos(arc.rotation);
    const double s = std::sin(arc.rotation);
    const double u = -sense * arc.radii[0] * std::sin(t);
    const double v = sense * arc.radii[1] * std::cos(t);
    const Point along(c * u - s * v, s * u + c * v);
    const double speed = along.Length();
    PricedPiece bend;
    bend.piece.first = run.first;
    bend.piece.last = run.last;
    bend.piece.isArc = true;
    bend.first = bend.last = along / speed;
    bend.enter = bend.leave = std::atan2(bend.first.y, bend.first.x);
    bend.curvature = sense * arc.radii[0] * arc.radii[1] / (speed * speed * speed);
    bend.piece.circle.radius = 1.0 / std::fabs(bend.curvature);
    bend.piece.circle.centre = PointOn(arc, t) + Point(-bend.first.y, bend.first.x) / bend.curvature;
    return bend;
}

} // namespace Tessera::Geometry
