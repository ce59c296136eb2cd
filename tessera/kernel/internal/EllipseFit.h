// The ellipse fit in two stages, with a limit, and its last step, the deviations.
#pragma once

#include "tessera/kernel/VexMath.h"
#include "tessera/kernel/internal/EllipseDistances.h"

/// LSFIT_ellipse_to_points_2d for callers without use for every ellipse. Both stages answer false when there
/// is no ellipse. The points must outlive the fit.
class EllipseFitter {
public:
    EllipseFitter(const Vex::Math::Point2* pts, int n) : pts_(pts), n_(n) {}

    /// The direct fit, at a tenth of the cost of the whole: from evenly drawn points all round, the answer
    /// differs from it by a few degrees and parts in a hundred.
    bool FindStart(EllipseShape* start);

    /// After FindStart. False too, often much sooner, when the ellipse passes some point at more than
    /// `limit`. The shape as described there; undefined when false.
    bool Refine(double limit, EllipseShape* ellipse, double err[3]);
    /// The same without deviations: true where only these would tell that a point lies farther off.
    bool Refine(double limit, EllipseShape* ellipse);

private:
    bool RefineSamples(double limit);
    bool MapToPoints(EllipseShape* ellipse) const;

    const Vex::Math::Point2* pts_;
    int n_;
    Vex::Math::Point2 origin_{}; ///< and side of the box, to which the samples are brought
    double scale_ = 0.0;
    EllipseSamples samples_;
    double params_[kEllipseParameters];
};

/// Largest, root mean square and mean distance of n >= 1 points from an ellipse with a >= b > 0, as described
/// at LSFIT_ellipse_to_points_2d.
void MeasureEllipseDeviations(const Vex::Math::Point2* pts, int n, const EllipseShape& ellipse,
                              double err[3]);
