#include "tessera/recognition/internal/RulesReading.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/InkSpeeds.h"
#include "tessera/recognition/internal/PathLengths.h"
#include "tessera/recognition/internal/RecognitionTolerances.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

// Diagonal of the box at which the most drawn shapes come back right (45 of 30, 45, 60, 100). The box lies
// along the ink, so that what the rules find does not depend on which way it is turned.
constexpr double kWorkingDiagonal = 45.0;

InkShape ShapeOf(const Curve& only) {
    switch (only.GetType()) {
    case CurveType_Line:
        return InkShape::Line;
    case CurveType_Arc:
        return only.IsClosed() ? InkShape::Circle : InkShape::Arc;
    case CurveType_Ellipse:
        return only.IsClosed() ? InkShape::Ellipse : InkShape::EllipticArc;
    default:
        return InkShape::Spline;
    }
}

// Whether the curve runs against the ink that it stands for.
bool RunsAgainst(const InterpretedCurve& made, const std::vector<InkSample>& samples) {
    if (made.curve->IsClosed())
        return false;
    const InkSample& first = samples[static_cast<std::size_t>(made.firstSample)];
    const Point p(first.x, first.y);
    return p.Distance2(made.curve->GetEnd()) < p.Distance2(made.curve->GetStart());
}

// In which the ink runs, or at right angles to it: the mean over its length of the fourth powers of the
// steps' directions, as complex numbers, which are the same for all four.
Point MainDirection(const std::vector<InkSample>& samples) {
    Point sum;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Point d(samples[i].x - samples[i - 1].x, samples[i].y - samples[i - 1].y);
        const double length = d.Length();
        if (!(length > 0.0))
            continue;
        const Point square = Point(d.x * d.x - d.y * d.y, 2.0 * d.x * d.y) / length;
        sum += Point(square.x * square.x - square.y * square.y, 2.0 * square.x * square.y) / length;
    }
    const double angle = 0.25 * std::atan2(sum.y, sum.x);
    return {std::cos(angle), std::sin(angle)};
}

// In the frame of a unit direction.
XYBox BoxAlong(const Point& direction, const std::vector<InkSample>& samples) {
    const auto turned = [&](const InkSample& s) {
        const Point p(s.x, s.y);
        return Point(direction.Dot(p), direction.Cross(p));
    };
    XYBox box(turned(samples[0]), turned(samples[0]));
    for (const InkSample& s : samples)
        box.Merge(turned(s));
    return box;
}

/// Deletes the results that have not been taken over: memory may run out before they are.
class ResultOwner {
public:
    explicit ResultOwner(SketchRecognizer& recognizer) : recognizer_(recognizer) {}
    ResultOwner(const ResultOwner&) = delete;
    ResultOwner& operator=(const ResultOwner&) = delete;
    ~ResultOwner() {
        while (const auto result = Next())
            delete &result->GetResult();
    }
    /// The curve of the result is the caller's, too; null after the last.
    std::unique_ptr<RecognizedGeometry> Next() {
        const auto& results = recognizer_.GetResults();
        return std::unique_ptr<RecognizedGeometry>(next_ < results.size() ? results[next_++] : nullptr);
    }

private:
    SketchRecognizer& recognizer_;
    std::size_t next_ = 0;
};

} // namespace

RulesReading::RulesReading(const InkStroke& ink, const SketchRecognizerPreferences& preferences)
    : ink_(ink), preferences_(preferences) {
    preferences_.SetZoomFactor(1.0); // of the working size, whatever the view shows of the model
    const XYBox box = BoxAlong({1.0, 0.0}, ink.samples);
    x_ = box.min.x;
    y_ = box.min.y;
    const XYBox along = BoxAlong(MainDirection(ink.samples), ink.samples);
    scale_ = kWorkingDiagonal / along.min.Distance(along.max);
    const std::vector<double> speeds = SpeedsOf(ink, scale_);
    std::vector<StrokePoint> points;
    points.reserve(ink.samples.size());
    for (std::size_t i = 0; i < ink.samples.size(); ++i) {
        const InkSample& s = ink.samples[i];
        points.emplace_back(scale_ * (s.x - x_), scale_ * (s.y - y_), speeds[i]);
    }
    SumPathLengths(points, lengthTo_);
    Stroke stroke(std::move(points));
    SketchRecognizer recognizer;
    ResultOwner pending(recognizer);
    recognizer.SetPreferences(preferences_);
    recognizer.Recognize(stroke, true, CurveType_Line);
    if (preferences.GetCurveTidy())
        CloseRoundStroke(recognizer);
    pieces_.reserve(recognizer.GetResults().size());
    while (const std::unique_ptr<RecognizedGeometry> result = pending.Next()) {
        InterpretedCurve made;
        made.curve.reset(&result->GetResult());
        made.firstSample = result->GetStartIndex();
        made.lastSample = result->GetEndIndex();
        pieces_.push_back(std::move(made));
    }
}

bool RulesReading::SawKindOf(const InterpretedCurve& made) const {
    const int n = static_cast<int>(ink_.samples.size());
    const int count = made.lastSample - made.firstSample + (made.lastSample < made.firstSample ? n : 0);
    const int middle = (made.firstSample + count / 2) % n;
    bool sawAny = false;
    for (const InterpretedCurve& piece : pieces_) {
        if (piece.firstSample > middle || middle > piece.lastSample)
            continue;
        if (piece.curve->GetType() == made.curve->GetType())
            return true;
        sawAny = true;
    }
    return !sawAny;
}

void RulesReading::BringToModel() {
    double back[3][3] = {{1.0, 0.0, scale_ * x_}, {0.0, 1.0, scale_ * y_}, {0.0, 0.0, scale_}};
    for (std::size_t i = 0; i < pieces_.size() && !areInModel_; ++i) {
        pieces_[i].curve->Transform(back);
        pieces_[i].isReversed = RunsAgainst(pieces_[i], ink_.samples);
    }
    areInModel_ = true;
}

std::vector<const InterpretedCurve*> RulesReading::Curves(bool withoutCrumbs) {
    BringToModel();
    double longest = 0.0;
    for (const InterpretedCurve& piece : pieces_)
        longest = std::max(longest, PieceLength(lengthTo_, piece.firstSample, piece.lastSample));
    const double least = withoutCrumbs ? SmallCurveLength(longest) : 0.0;
    std::vector<const InterpretedCurve*> curves;
    for (const InterpretedCurve& piece : pieces_)
        if (!withoutCrumbs || scale_ * piece.curve->Length() >= least)
            curves.push_back(&piece);
    return curves;
}

void RulesReading::Read(bool withoutCrumbs, InkReading& reading) {
    for (const InterpretedCurve* piece : Curves(withoutCrumbs)) {
        InterpretedCurve& made = reading.curves.emplace_back();
        made.curve.reset(piece->curve->CopyCurveOnly());
        made.firstSample = piece->firstSample;
        made.lastSample = piece->lastSample;
        made.isReversed = piece->isReversed;
    }
    if (reading.curves.size() == 1)
        reading.shape = ShapeOf(*reading.curves[0].curve);
    else if (!reading.curves.empty())
        reading.shape = InkShape::Pieces;
    reading.isClosed = reading.curves.size() == 1 && reading.curves[0].curve->IsClosed();
    MeasureDeviations(ink_.samples, reading);
}

std::vector<Chain> RulesReading::AsChains(const PricedPath& ink) const {
    std::vector<int> breaks{0};
    std::vector<bool> isArc;
    for (const InterpretedCurve& made : pieces_) {
        const CurveType_e kind = made.curve->GetType();
        const int last = &made == &pieces_.back() ? ink.path.Size() - 1 : PointAt(ink.path, made.lastSample);
        if (kind > CurveType_Arc || made.curve->IsClosed() || last <= breaks.back() + 1)
            return {};
        breaks.push_back(last);
        isArc.push_back(kind == CurveType_Arc);
    }
    return isArc.empty() ? std::vector<Chain>() : ChainsOver(ink, breaks, isArc);
}

std::optional<RoundShape> RulesReading::AsRound(const PricedPath& ink) const {
    if (pieces_.size() != 1 || !pieces_[0].curve->IsClosed())
        return std::nullopt;
    const Curve& curve = *pieces_[0].curve;
    RoundShape shape;
    if (curve.GetType() == CurveType_Arc) {
        shape.isCircle = true;
        shape.centre = static_cast<const Arc&>(curve).GetCenter();
        shape.radii[0] = shape.radii[1] = static_cast<const Arc&>(curve).GetRadius();
    } else if (curve.GetType() == CurveType_Ellipse) {
        double centre[2];
        double limits[2];
        static_cast<const Ellipse&>(curve).AskEllipseData(centre, shape.radii, &shape.rotation, &limits[0],
                                                          &limits[1]);
        shape.centre = {centre[0], centre[1]};
    } else {
        return std::nullopt;
    }
    if (shape.radii[0] < shape.radii[1]) {
        std::swap(shape.radii[0], shape.radii[1]);
        shape.rotation += 0.5 * std::numbers::pi;
    }
    shape.centre = ink.path.FromModel({x_ + shape.centre.x / scale_, y_ + shape.centre.y / scale_});
    for (double& radius : shape.radii)
        radius /= scale_ * ink.path.scale;
    PriceRound(ink, shape);
    return shape;
}

double RulesReading::LengthOf(int firstSample, int lastSample) const {
    const double run =
        lengthTo_[static_cast<std::size_t>(lastSample)] - lengthTo_[static_cast<std::size_t>(firstSample)];
    return lastSample >= firstSample ? run : run + lengthTo_.back();
}

double RulesReading::ToleranceOf(const InterpretedCurve& made) const {
    double tol[4];
    RecognitionTolerances(preferences_, LengthOf(made.firstSample, made.lastSample), tol);
    switch (made.curve->GetType()) {
    case CurveType_Line:
        return tol[0] / scale_;
    case CurveType_Arc:
        return tol[1] / scale_;
    case CurveType_Ellipse:
        return tol[2] / scale_;
    default:
        return tol[3] / scale_;
    }
}

bool RulesReading::Strays(const InkReading& reading, double allowed, double ends) const {
    const auto indexAt = [&](double length) {
        return static_cast<int>(std::lower_bound(lengthTo_.begin(), lengthTo_.end(), length) -
                                lengthTo_.begin());
    };
    const int first = indexAt(scale_ * ends);
    const int last = indexAt(lengthTo_.back() - scale_ * ends);
    return std::any_of(reading.curves.begin(), reading.curves.end(), [&](const InterpretedCurve& made) {
        const double most = allowed + ToleranceOf(made);
        return made.maxDeviation > most && DeviationAmong(ink_.samples, made, first, last) > most;
    });
}

double RulesReading::LineShare() const {
    double tol[4];
    RecognitionTolerances(preferences_, lengthTo_.back(), tol);
    return tol[0] / lengthTo_.back();
}

double RulesReading::ClosingShare(double length) const {
    return ClosedStrokeTolerance(preferences_, scale_ * length) / (scale_ * length);
}

} // namespace Tessera::Geometry
