// The running answer of a search for the nearest curve point.
#pragma once

#include "tessera/kernel/CurveRecord.h"

/// Keeps the nearest of the points it is offered and notices when two places are equally near.
class NearestPoint {
public:
    explicit NearestPoint(const double p[3]) : p_{p[0], p[1], p[2]} {}

    void Offer(double t, const double point[3]);
    /// No point beyond this squared distance can change the answer.
    double ReachSq() const { return reachSq_; }

    double T() const { return t_; }
    const double* Point() const { return point_; }
    double DistanceSq() const { return distanceSq_; }
    bool IsAmbiguous() const { return ambiguous_; }

private:
    double p_[3];
    double point_[3] = {};
    double t_ = 0.0;
    double distanceSq_ = 1e300;
    double reachSq_ = 1e300;
    bool ambiguous_ = false;
};

/// Nearest point of a B-curve, offered to `nearest`; false when the form is unusable or memory runs out.
bool FindNearestOnBcurve(KC_CURVE_struct_s* c, const double p[3], NearestPoint& nearest);
/// The same for one span of it.
bool OfferNearestOnSpan(EVC_bcurve_s* b, int span, const double p[3], NearestPoint& nearest);
/// Nearest point of one Bezier piece (order x 4 homogeneous coefficients, parameter 0 to 1).
void OfferNearestOnBezier(const double* bezier, int degree, bool polynomial, const double p[3],
                          NearestPoint& nearest);
