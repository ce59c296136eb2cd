// Intersections while they are being collected: what the solvers report, and the list they report to.
#pragma once

#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

/// How a hit was found. A touch outranks a crossing, both outrank a curve end that merely lies near.
enum class HitKind { Touch, Crossing, End };

struct Hit {
    double t1, t2;
    double x, y;
    double gap; ///< distance of the two curve points
    HitKind kind;
};

/// One of the two records of an intersection, with what the solvers ask about it again and again.
struct TopolCurve {
    KC_CURVE_struct_s* record;
    bool bounded; ///< limits count
    double limits[2];
    double size;  ///< extent of the bounded curve
    double reach; ///< largest coordinate, for rounding
};

/// Brings a record that leaves the plane z = 0 down to it: c then is a copy, which `flat` owns. Every other
/// record stays as it is. False when memory runs out.
bool FlattenRecord(KC_CURVE_struct_s*& c, RecordPtr& flat);

/// False for unknown forms and unusable B-curves.
bool MakeTopolCurve(KC_CURVE_struct_s* c, CRV_TOPOL_extent_t extent, TopolCurve& out);

/// Two records being intersected and what has been found. A failed allocation makes the list fail for good.
class CurveHits {
public:
    CurveHits(const TopolCurve& a, const TopolCurve& b, double tol) : a_(a), b_(b), tol_(tol) {}

    /// Takes a hit whose parameters belong to the carriers: lifts or clamps them into the limits and drops
    /// the hit when it lies outside by more than the tolerance, or when the two points are farther apart than
    /// it.
    void Offer(double t1, double t2, HitKind kind);
    /// Reports the ends of the bounded, open records that lie on the other one.
    bool OfferEnds();
    /// One hit for each place: merges what lies within the tolerance, and what is joined by a stretch on
    /// which the curves stay within it; drops stretches longer than any touch.
    bool Merge();

    const TopolCurve& A() const { return a_; }
    const TopolCurve& B() const { return b_; }
    double Tol() const { return tol_; }
    int Count() const { return count_; }
    /// Forgets the hits from number n on.
    void Truncate(int n) { count_ = n; }
    bool HasFailed() const { return failed_; }
    const Hit& operator[](int i) const { return hits_[static_cast<std::size_t>(i)]; }

private:
    bool OfferEndsOf(const TopolCurve& from, const TopolCurve& onto, bool swapped);
    void MergeNear();
    void MergeJoined();
    void DropStretches();
    bool StaysWithin(const Hit& from, const Hit& to) const;
    bool CoincidesBeside(const Hit& hit, double side) const;
    double LongestTouch() const;
    void ReplaceCluster(int first, int last, Hit* kept);

    TopolCurve a_, b_;
    double tol_;
    SmArray<Hit> hits_;
    int count_ = 0, capacity_ = 0;
    bool failed_ = false;
};

// --- Solvers: carriers of the two records of a list; limits are the list's business. -----------------

void IntersectLines(CurveHits& hits);
void IntersectLineConic(CurveHits& hits);
void IntersectConics(CurveHits& hits);
/// First record a line or conic, second a B-curve.
bool IntersectWithBcurve(CurveHits& hits);
bool IntersectBcurves(CurveHits& hits);
