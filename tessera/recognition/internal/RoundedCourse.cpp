#include "tessera/recognition/internal/RoundedCourse.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessera::Geometry {

namespace {

constexpr double kRightAngle = 0.5 * std::numbers::pi;
constexpr double kAtJoint = 0.25;  // steps before a joint, the pen starts in the joint
constexpr double kNearly = 1.0;    // steps before its end, a piece counts as drawn to it
constexpr double kBendReach = 2.0; // points to either side over which the outline's bend is averaged
// Nothing guides the pen round the corners: there it strays farther than along a line.
constexpr double kSpreadShare = 0.15;

// The place of an index that goes round after round.
int Within(int k, int count) {
    return (k % count + count) % count;
}

// Of the corners of the ink where the outline does not bend, or not so much.
double PriceOfCorners(const PricedPath& ink, const RoundedCourse& course) {
    const double reach = kBendReach * ink.path.step;
    return PriceOfHiddenCorners(ink, [&](const TurningPeak& peak) {
        const double at = course.At(peak.at);
        return (course.HeadingAt(at + reach) - course.HeadingAt(at - reach)) / (2.0 * reach);
    });
}

} // namespace

RoundedCourse::RoundedCourse(const InkPath& path, const RoundedOutline& outline)
    : outline_(outline), count_(outline.IsSlot() ? 2 : 4) {
    const double quarter = kRightAngle * outline.radius;
    joints_ = {0.0, 2.0 * outline.along, 2.0 * outline.along + quarter,
               2.0 * (outline.along + outline.across) + quarter};
    half_ = joints_.back() + quarter;
    run_.reserve(path.pts.size());
    double length = 0.0;
    double before = 0.0;
    for (const Point& p : path.pts) {
        const double at = AlongOutline(p);
        length += run_.empty() ? at : std::remainder(at - before, Round());
        before = at;
        run_.push_back(length);
    }
    if (run_.back() >= run_.front())
        return;
    // Clockwise: the outline mirrored in its axis.
    side_ = -1.0;
    const double shift = AlongOutline(path.pts.front()) + run_.front();
    for (double& at : run_)
        at = shift - at;
}

double RoundedCourse::Gap() const {
    return std::max(0.0, 1.0 - Turns()) * Round();
}

double RoundedCourse::HeadingAt(double length) const {
    const int piece = PieceAt(length);
    const bool isArc = piece % 2 != 0;
    const int lines = isArc ? piece - 1 : piece; // and arcs before, in all
    return side_ *
           (std::numbers::pi * lines / count_ + (isArc ? (length - Joint(piece)) / outline_.radius : 0.0));
}

ExactChain RoundedCourse::AsChain(const InkPath& path) const {
    const int begin = PieceAt(At(0) + kAtJoint * path.step);
    const int round = 2 * count_;
    ExactChain exact;
    exact.isClosed = true;
    for (int k = begin; k < begin + round; ++k) {
        const bool isArc = k % 2 != 0;
        exact.pieces.push_back({isArc ? PieceKind::Arc : PieceKind::Line, StartOf(k), StartOf(k + 1),
                                isArc ? TipOf(k) : Point(), PointAt(Joint(k)), PointAt(Joint(k + 1))});
    }
    // The pen came back to the piece in which it began, or to the end of that piece, too.
    const double end = At(path.Size() - 1);
    ExactPiece& first = exact.pieces.front();
    if (end >= Joint(begin + round))
        first.first = PointAt(Joint(begin + round));
    if (end >= Joint(begin + round + 1) - kNearly * path.step) {
        first.last = PointAt(Joint(begin + round + 1));
        ++exact.pieces[1].first; // no break with the piece before: not on this one's ink
    }
    return exact;
}

double RoundedCourse::Joint(int k) const {
    const int place = Within(k, count_);
    const int halves = (k - place) / count_;
    return halves * half_ + joints_[static_cast<std::size_t>(place)];
}

int RoundedCourse::PieceAt(double length) const {
    int piece = static_cast<int>(std::floor(length / half_)) * count_;
    while (length >= Joint(piece + 1))
        ++piece;
    return piece;
}

int RoundedCourse::PointAt(double length) const {
    const auto beyond =
        std::find_if(run_.begin() + 1, run_.end(), [&](double passed) { return passed > length; });
    return static_cast<int>(beyond - run_.begin()) - 1;
}

Point RoundedCourse::StartOf(int k) const {
    const int place = Within(k, 2 * count_);
    const double half = place < count_ ? 1.0 : -1.0; // the second one is the first turned about the centre
    const double u = outline_.along;
    const double v = outline_.across;
    const double r = outline_.radius;
    const Point starts[] = {{-u, -v - r}, {u, -v - r}, {u + r, -v}, {u + r, v}};
    const Point& start = starts[place % count_];
    return InPlane(half * start.x, half * start.y);
}

Point RoundedCourse::TipOf(int k) const {
    const int place = Within(k, 2 * count_);
    const double half = place < count_ ? 1.0 : -1.0;
    const double out = outline_.radius * (outline_.IsSlot() ? 1.0 : std::numbers::sqrt2 / 2.0);
    const double v = outline_.IsSlot() ? 0.0 : outline_.across + out;
    return InPlane(half * (outline_.along + out), place % count_ == 1 ? half * -v : half * v);
}

Point RoundedCourse::InPlane(double u, double v) const {
    const Point left(-outline_.axis.y, outline_.axis.x);
    return outline_.centre + u * outline_.axis + (side_ * v) * left;
}

double RoundedCourse::AlongOutline(const Point& p) const {
    const Point d = p - outline_.centre;
    const double u = outline_.axis.Dot(d);
    const double v = side_ * outline_.axis.Cross(d);
    const double beyondU = std::fabs(u) - outline_.along;
    const double beyondV = std::fabs(v) - outline_.across;
    if (beyondU <= beyondV && beyondU <= 0.0)
        return v < 0.0 ? outline_.along + u : half_ + outline_.along - u;
    const double before = u < 0.0 ? half_ : 0.0;
    const double ahead = u < 0.0 ? -v : v;
    if (beyondV <= 0.0)
        return before + joints_[2] + outline_.across + ahead;
    return before + (ahead < 0.0 ? joints_[1] + outline_.radius * std::atan2(beyondU, beyondV)
                                 : joints_[3] + outline_.radius * std::atan2(beyondV, beyondU));
}

RoundedShape Describe(const PricedPath& ink, const RoundedCourse& course, int numbers, double sumSq) {
    return {course.Outline(),
            {numbers * kNumberPrice + PriceOfCorners(ink, course), kSpreadShare * sumSq},
            sumSq};
}

} // namespace Tessera::Geometry
