// The poly-line of the samples stands in for a curve. Boxes and distances come straight from the samples: a
// spline through them would cost some 256 bytes a sample.
#include "tessera/strokes/Stroke.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "tessera/core/Group.h"
#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/kernel/internal/BoxPoints.h"
#include "tessera/strokes/internal/SegmentTree.h"

namespace Tessera::Geometry {

namespace {

constexpr double kIndexParameterTol = 1e-10; // parameters this near fall on the sample
// Model units. Boxes only discard segments here, so they are grown well beyond the tolerance by which curves
// decide that they touch.
constexpr double kBoxMargin = 1e-6;

constexpr int kSampleStride = sizeof(StrokePoint) / sizeof(double);
static_assert(sizeof(StrokePoint) == 4 * sizeof(double));

void CheckIsPolyline(const std::vector<StrokePoint>& points) {
    if (points.size() < 2) {
        Core::ThrowMessage("Stroke::CreateSpline:  Incorrect point index");
    }
}

BoundingBox BoxOf(const std::vector<StrokePoint>& points) {
    int dimension = 0;
    double centre[3];
    double halfSizes[3][3];
    BoxPoints(static_cast<int>(points.size()), &points.front().x, kSampleStride, &dimension, centre,
              halfSizes);
    return {dimension, centre, halfSizes};
}

// Index range of samples, both ends included.
struct IndexRange {
    int first, last;
    bool IsValid() const { return first < last; }
};

IndexRange Clamped(int first, int last, int n) {
    return {std::max(first, 0), std::min(last, n - 1)};
}

// First index from `from` on whose parameter is not less than t; n when there is none.
int FindNotBefore(double t, int from, int n) {
    int index = from;
    while (index < n && !(index / (n - 1.0) >= t - kIndexParameterTol)) {
        ++index;
    }
    return index;
}

// Position and speed at index parameter t inside the segment that ends at sample `end`.
StrokePoint Interpolate(const std::vector<StrokePoint>& points, int end, double t) {
    const double f = t * (static_cast<double>(points.size()) - 1.0) - (end - 1);
    const StrokePoint& a = points[end - 1];
    const StrokePoint& b = points[end];
    return {a.x + f * (b.x - a.x), a.y + f * (b.y - a.y), a.GetSpeed() + f * (b.GetSpeed() - a.GetSpeed())};
}

} // namespace

Stroke::Stroke() = default;

Stroke::Stroke(int n, double* x, double* y, double* speed) {
    points_.reserve(std::max(n, 0));
    for (int i = 0; i < n; ++i) {
        points_.emplace_back(x[i], y[i], speed == nullptr ? 0.0 : speed[i]);
    }
    bboxOutdated_ = true;
    UpdateBoundingBox();
}

Stroke::Stroke(std::vector<StrokePoint> points) : points_(std::move(points)) {
    bboxOutdated_ = true;
}

Stroke::Stroke(const Stroke& other)
    : DisplayableObject(other), points_(other.points_), boundingBox_(other.boundingBox_),
      bboxOutdated_(other.bboxOutdated_) {}

Stroke& Stroke::operator=(const Stroke& other) {
    TakeSamples(other);
    DisplayableObject::operator=(other);
    return *this;
}

Stroke::~Stroke() = default;

void Stroke::TakeSamples(const Stroke& other) {
    points_ = other.points_;
    boundingBox_ = other.boundingBox_;
    bboxOutdated_ = other.bboxOutdated_;
    ForgetSearch();
}

void Stroke::PointsChanged() {
    bboxOutdated_ = true;
    ForgetSearch();
}

void Stroke::ForgetSearch() {
    tree_.reset();
    queried_ = false;
}

// Null the first time after a change: a single question is answered by a scan.
const SegmentTree* Stroke::TreeOnceRepeated() const {
    if (queried_ && !tree_) {
        tree_ = std::make_unique<SegmentTree>(std::span<const StrokePoint>(points_));
    }
    queried_ = true;
    return tree_.get();
}

// --- Object model

Stroke* Stroke::Copy() const {
    auto copy = std::make_unique<Stroke>(*this);
    copy->CopyDisplayState(*this, true);
    return copy.release();
}

void Stroke::Transform(double m[3][3]) {
    LogForChange();
    for (StrokePoint& point : points_) {
        point.Transform(m);
    }
    boundingBox_.Transform(m);
    ForgetSearch();
}

Stroke* Stroke::DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const {
    const bool isCopied = copies.count(GetId()) != 0;
    auto* copy = dynamic_cast<Stroke*>(TaggedObject::DeepCopy(ids, copies));
    if (isCopied || copy == nullptr || !IsGrouped()) {
        return copy;
    }
    const auto found = copies.find(AskGroup()->GetId());
    auto* group = found == copies.end() ? nullptr : dynamic_cast<Core::Group*>(found->second);
    if (group != nullptr) {
        copy->SetGroup(group);
        group->RemoveObject(const_cast<Stroke*>(this)); // members are compared by address only
        group->AddObject(copy);
    }
    return copy;
}

bool Stroke::Replace(Core::TaggedObject* other) {
    const auto* source = dynamic_cast<const Stroke*>(other);
    if (source == nullptr || source->AskClass() != AskClass()) {
        return false;
    }
    LogForChange();
    TakeSamples(*source);
    CopyDisplayState(*source, true);
    return true;
}

bool Stroke::AskXYBox(XYBox& box) const {
    box = XYBox(points_);
    return true;
}

// --- Samples

void Stroke::AddPoint(const StrokePoint& p) {
    LogForChange();
    points_.push_back(p);
    PointsChanged();
}

void Stroke::AssignPoint(const StrokePoint& p, int index) {
    StrokePoint& slot = points_.at(static_cast<std::size_t>(index)); // a negative index is huge, too
    LogForChange();
    slot = p;
    PointsChanged();
}

Point Stroke::GetPoint(int index) const {
    if (index < 0 || index >= AskNumberOfPoints()) {
        Core::ThrowMessage("Stroke::GetPoint - input index is out of bounds");
    }
    return points_[index];
}

double Stroke::AskAverageSpeed() const {
    double sum = 0.0;
    for (const StrokePoint& point : points_) {
        sum += point.GetSpeed();
    }
    return points_.empty() ? 0.0 : sum / AskNumberOfPoints();
}

void Stroke::UpdateBoundingBox() {
    if (bboxOutdated_) {
        CheckIsPolyline(points_);
        boundingBox_ = BoxOf(points_);
        bboxOutdated_ = false;
    }
}

void Stroke::Resize(int n) {
    if (n > AskNumberOfPoints()) {
        points_.resize(n);
        ForgetSearch();
    }
}

void Stroke::Reverse() {
    std::reverse(points_.begin(), points_.end());
    ForgetSearch();
}

void Stroke::AppendPointsFromStroke(const Stroke& other) {
    LogForChange();
    const std::size_t count = other.points_.size(); // fixed: the other stroke may be this one
    for (std::size_t i = 0; i < count; ++i) {
        AddPoint(other.points_[i]);
    }
    PointsChanged();
}

void Stroke::PrependPointsFromStroke(const Stroke& other) {
    LogForChange();
    std::vector<StrokePoint> joined;
    joined.reserve(other.points_.size() + points_.size());
    joined.insert(joined.end(), other.points_.begin(), other.points_.end());
    joined.insert(joined.end(), points_.begin(), points_.end());
    points_.swap(joined);
    PointsChanged();
}

// --- Parts of the stroke

Stroke* Stroke::SubStroke(int first, int last) const {
    const IndexRange range = Clamped(first, last, AskNumberOfPoints());
    if (last <= first || !range.IsValid()) {
        Core::ThrowMessage("Stroke::SubStroke:  Incorrect point index");
    }
    auto part = std::make_unique<Stroke>();
    part->points_.assign(points_.begin() + range.first, points_.begin() + range.last + 1);
    part->bboxOutdated_ = true;
    part->CopyDisplayState(*this, false);
    part->UpdateBoundingBox();
    return part.release();
}

Stroke* Stroke::Extract(double* const params) const {
    const int n = AskNumberOfPoints();
    if (n < 3) {
        return nullptr;
    }
    const double t0 = params[0];
    const double t1 = params[1];
    const int first = FindNotBefore(t0, 0, n);
    const int last = FindNotBefore(t1, first, n);
    if (first == n || last == n || last - first + 1 < 3) {
        return nullptr;
    }
    // A start before the first sample has no segment to be interpolated in.
    const bool isStartInside = first > 0 && first / (n - 1.0) > t0 + kIndexParameterTol;
    const bool isEndInside = last / (n - 1.0) > t1 + kIndexParameterTol;
    const int lastWhole = isEndInside ? last - 1 : last;

    auto part = std::make_unique<Stroke>();
    part->points_.reserve(last - first + 2);
    if (isStartInside) {
        part->points_.push_back(Interpolate(points_, first, t0));
    }
    part->points_.insert(part->points_.end(), points_.begin() + first, points_.begin() + lastWhole + 1);
    if (isEndInside) {
        part->points_.push_back(Interpolate(points_, last, t1));
    }
    part->bboxOutdated_ = true;
    part->UpdateBoundingBox();
    return part.release();
}

Spline* Stroke::CreateSpline(int first, int last) const {
    const IndexRange range = Clamped(first, last, AskNumberOfPoints());
    if (last <= first || !range.IsValid()) {
        Core::ThrowMessage("Stroke::CreateSpline:  Incorrect point index");
    }
    const int poleCount = range.last - range.first + 1;
    std::vector<double> knots(static_cast<std::size_t>(poleCount) + 2);
    const auto poles = std::make_unique<double[][4]>(poleCount);
    knots.back() = 1.0; // the front is 0 already
    for (int i = 0; i < poleCount; ++i) {
        const StrokePoint& point = points_[range.first + i];
        knots[i + 1] = i / (poleCount - 1.0);
        poles[i][0] = point.x;
        poles[i][1] = point.y;
        poles[i][3] = 1.0;
    }
    return new Spline(poleCount, 2, 0, knots.data(), poles.get());
}

Spline* Stroke::CreateSpline() const {
    return CreateSpline(0, AskNumberOfPoints() - 1);
}

// --- Distance and intersections

double Stroke::DistanceBounded(const Point& p) const {
    CheckIsPolyline(points_);
    if (const SegmentTree* tree = TreeOnceRepeated()) {
        return std::sqrt(tree->DistanceSq(std::span<const StrokePoint>(points_), p.x, p.y));
    }
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < points_.size(); ++i) {
        best = std::min(best, SegmentDistanceSq(points_[i], points_[i + 1], p.x, p.y));
    }
    return std::sqrt(best);
}

void Stroke::Intersect(const Curve& curve, std::vector<Point>& out) const {
    const std::unique_ptr<Spline> polyline(CreateSpline());
    polyline->Intersect(curve, out);
}

void Stroke::IntersectBounded(const Curve& curve, std::vector<Point>& out) const {
    curve.UpdateBoundingBox();
    const BoundingBox curveBox = curve.AskBoundingBox();
    // An outdated box knows nothing of the samples added since.
    if (!bboxOutdated_ && !curveBox.IsIntersecting(&boundingBox_, kBoxMargin)) {
        return;
    }
    XYBox extent;
    if (!curve.AskXYBox(extent)) {
        return;
    }
    const PlaneRegion region{extent.min.x - kBoxMargin, extent.min.y - kBoxMargin, extent.max.x + kBoxMargin,
                             extent.max.y + kBoxMargin};
    const auto intersectSegment = [&](int i) {
        const Line segment(points_[i], points_[i + 1]);
        segment.IntersectBounded(curve, out);
    };
    const std::span<const StrokePoint> points(points_);
    if (const SegmentTree* tree = TreeOnceRepeated()) {
        tree->VisitMeeting(points, region, intersectSegment);
        return;
    }
    for (int i = 0; i < SegmentCount(points); ++i) {
        if (SegmentRegion(points, i).Meets(region)) {
            intersectSegment(i);
        }
    }
}

} // namespace Tessera::Geometry
