#include "tessera/recognition/internal/SlotCourse.h"

#include <cmath>

namespace Tessera::Geometry {

SlotCourse::SlotCourse(const InkPath& path, const SlotShape& slot) : slot_(slot) {
    run_.reserve(path.pts.size());
    double length = 0.0;
    double before = 0.0;
    for (const Point& p : path.pts) {
        const double at = AlongOutline(p);
        length += run_.empty() ? at : std::remainder(at - before, Outline());
        before = at;
        run_.push_back(length);
    }
    if (run_.back() >= run_.front())
        return;
    // Clockwise: the outline mirrored in the slot's axis.
    side_ = -1.0;
    const double shift = AlongOutline(path.pts.front()) + run_.front();
    for (double& at : run_)
        at = shift - at;
}

double SlotCourse::Joint(int k) const {
    const int whole = k >= 0 ? k / 2 : (k - 1) / 2;
    return whole * (Line() + HalfCircle()) + (k - 2 * whole) * Line();
}

int SlotCourse::PieceAt(double length) const {
    const int whole = static_cast<int>(std::floor(length / (Line() + HalfCircle())));
    return 2 * whole + (length >= Joint(2 * whole + 1) ? 1 : 0);
}

int SlotCourse::PointAt(double length) const {
    const auto beyond =
        std::find_if(run_.begin() + 1, run_.end(), [&](double passed) { return passed > length; });
    return static_cast<int>(beyond - run_.begin()) - 1;
}

double SlotCourse::HeadingAt(double length) const {
    const int piece = PieceAt(length);
    const bool isArc = piece % 2 != 0;
    const double lines = isArc ? piece - 1 : piece; // and half circles before, in all
    return side_ * (0.5 * std::numbers::pi * lines + (isArc ? (length - Joint(piece)) / slot_.radius : 0.0));
}

Point SlotCourse::StartOf(int k) const {
    const int place = (k % 4 + 4) % 4;
    return InPlane(place == 1 || place == 2 ? slot_.half : -slot_.half,
                   place < 2 ? -slot_.radius : slot_.radius);
}

Point SlotCourse::TipOf(int k) const {
    const double tip = slot_.half + slot_.radius;
    return InPlane((k % 4 + 4) % 4 == 1 ? tip : -tip, 0.0);
}

Point SlotCourse::InPlane(double u, double v) const {
    const Point left(-slot_.axis.y, slot_.axis.x);
    return slot_.centre + u * slot_.axis + (side_ * v) * left;
}

double SlotCourse::AlongOutline(const Point& p) const {
    const Point d = p - slot_.centre;
    const double u = slot_.axis.Dot(d);
    const double v = side_ * slot_.axis.Cross(d);
    if (u > slot_.half)
        return Line() + slot_.radius * (std::atan2(v, u - slot_.half) + 0.5 * std::numbers::pi);
    if (u < -slot_.half)
        return Joint(3) + slot_.radius * (std::atan2(-v, -u - slot_.half) + 0.5 * std::numbers::pi);
    return v < 0.0 ? u + slot_.half : Joint(2) + slot_.half - u;
}

} // namespace Tessera::Geometry
