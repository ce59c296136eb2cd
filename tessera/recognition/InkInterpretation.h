// InkInterpretation - reads one pen stroke as the exact curves its drawer meant, with the joints between
// them.
//
// The recogniser's rules describe the ink as it lies on the page; the interpretation asks what a hand was
// trying to draw. Whole hypotheses (a chain of lines and arcs, for a quick, a usual and a careful hand, open
// or closed; one closed round shape; a slot; a rectangle with rounded corners; a regular polygon; an
// elliptic arc; a free form) are compared by what it costs to describe the ink with them, and the cheapest is
// made exact: corners where neighbours intersect, tangent joints, closed shapes that close, rectangles with
// right angles. In a chain, elliptic arcs between corners take the place of lines and arcs that they describe
// more briefly.
// A reading gives way that lies by more than the rules' tolerance farther from its ink than the rules' own
// reading does (what a closing shape or a lost hook cuts off the stroke's ends aside), or farther outside of
// the ink's box.
//
// Units       model units of the samples; nothing in the answer depends on the size of the drawing (some
//             millionths of a unit at least, or curves are too short to be any), except where earlier curves
//             come in: what is near them is judged by the preferences' distances.
// Preferences each switches its own stages and no others:
//   always                     the size at which the rules' tolerances fit; the rules' breaks, kinds and fits
//   doScribble                 the scribble question
//   oversketch                 ink along an earlier curve gives it a new form; without it such ink is new
//   thinWallRecognition        ink drawn forth and back along itself becomes the two sides of a wall
//   curveTidy                  such ink becomes its centre line otherwise; closing (a full circle or ellipse,
//                              a smooth seam, a last corner or side that is the first); crumbs and hooks
//                              swept, neighbours that are one curve merged; corners where neighbours
//                              intersect, tangent joints exactly tangent; ends onto free ends of earlier
//                              curves
//   reduceInkCurveDeviation    hypotheses of other pieces and whole shapes than the rules', where these
//                              describe the ink more briefly; without it the rules' pieces stay and are
//                              tidied
//   changeCurveType            curves of other kinds than the rules saw, where these describe the ink as
//                              well; without it a reading with such a curve in it gives way to the rules'
//                              pieces, and an earlier curve keeps its kind or the ink is new
//   snapping                   lines onto axes within snapAngleCreate; ends onto key points of earlier curves
//   regularPolygonRecognition  rectangles, rhombi, parallelograms and regular polygons made exact, squares
//                              with rounded corners too
//             A stage needs what it works on: a regular polygon the joined corners of curveTidy, a slot, a
//             rounded rectangle or a fillet the hypotheses. With all of them off the reading is the
//             recogniser's own.
// Ownership   a reading owns its curves; earlier curves are borrowed for the call.
// Errors      thrown as char* texts: "InterpretInk - a sample is not finite", "InterpretInk - out of memory"
//             or the text of the curve that got none; std::bad_alloc where a container got no memory.
//             Nothing is changed then.
// Cost        linear in the samples.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Point.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/SnapPoint.h"

namespace Tessera::Geometry {

struct InkSample {
    double x = 0.0;
    double y = 0.0;
    double t = 0.0; ///< time stamp, in any unit
};

struct InkStroke {
    std::vector<InkSample> samples; ///< in drawing order; repeated positions are passed over
    bool hasTimes = false;          ///< whether the samples' times mean anything
};

/// What the stroke as a whole was read as; the first that fits.
enum class InkShape : std::int32_t {
    Nothing,  ///< no two different positions: no curves
    Scribble, ///< the gesture that erases: no curves
    Retrace,  ///< an earlier curve drawn over: curves[0] is its new form
    ThinWall, ///< drawn forth and back along itself
    Line,
    Arc,         ///< a circular arc
    EllipticArc, ///< an arc of an ellipse
    Circle,      ///< one full circle
    Ellipse,     ///< one full ellipse
    Spline,      ///< one free-form curve, open or closed
    Triangle,    ///< three lines, closed; from here to Polygon all corners are joined
    Square,      ///< four equal sides, four right angles
    Rectangle,   ///< four right angles
    Rhombus,     ///< four equal sides
    Parallelogram,
    Quadrilateral,
    RegularPolygon, ///< three, or five to twelve, equal sides and angles
    Polygon,        ///< any other closed chain of lines
    Polyline,       ///< an open chain of lines
    Chain,          ///< several curves, not all of them lines, open or closed
    Pieces          ///< several curves that do not form one chain
};

enum class CurveEnd : std::int32_t { Start, End };

/// One curve of a reading, in the order in which the pen drew them.
struct InterpretedCurve {
    std::unique_ptr<Curve> curve;
    int firstSample = 0; ///< the ink it stands for: samples firstSample to lastSample, both included. Where a
    int lastSample = 0;  ///< side runs across the start of a closed stroke, firstSample is above lastSample.
                         ///< Where several curves are centre lines, it is the way forth.
    double maxDeviation = 0.0; ///< largest distance of that ink from the curve, model units
    bool isReversed = false;   ///< the pen ran from the curve's end to its start (arcs run counter-clockwise)

    /// The end that the pen came to first (last).
    CurveEnd First() const { return isReversed ? CurveEnd::End : CurveEnd::Start; }
    CurveEnd Last() const { return isReversed ? CurveEnd::Start : CurveEnd::End; }
};

enum class JointKind : std::int32_t {
    Corner, ///< the direction changes
    Tangent ///< the direction does not change
};

/// Two ends of curves of the reading that are the same point.
struct InkJoint {
    int before = 0; ///< index of the curve that the pen leaves
    int after = 0;  ///< index of the curve that it enters; may equal `before` for a closed spline
    CurveEnd beforeEnd = CurveEnd::End;
    CurveEnd afterEnd = CurveEnd::Start;
    JointKind kind = JointKind::Corner;
    bool isClosing = false; ///< where the end of the stroke meets its start
    Point position;
    double turnDeg = 0.0; ///< change of direction, counter-clockwise positive, in (-180, 180]
};

/// An end of a curve of the reading that was put onto a key point of an earlier curve.
struct InkConnection {
    int curve = 0;
    CurveEnd end = CurveEnd::Start;
    int earlier = 0; ///< index in the earlier curves
    SnapPointType_e keyPoint = SnapPointType_None;
    Point position;
};

struct InkReading {
    InkShape shape = InkShape::Nothing;
    std::vector<InterpretedCurve> curves;
    std::vector<InkJoint> joints; ///< in drawing order, the closing one last
    std::vector<InkConnection> connections;
    int retraced = -1; ///< index of the earlier curve that curves[0] is the new form of, or -1
    int cusps = 0;     ///< inner cusps of a scribble
    bool isClosed = false;
    double handSpread = 0.0; ///< root mean square distance of the ink from the curves, model units
};

/// Reads one stroke.
///
/// @param ink      at least two different positions for a reading with curves.
/// @param earlier  curves of the drawing so far, oldest first; null ones are passed over.
///
/// A retraced curve is not touched: curves[0] holds its new form, of the same kind where the ink allows.
/// Give a curve of the same kind its new geometry with Curve::CopyCurveData, which keeps its identifier,
/// display data and dimensions.
TESSERA_API InkReading InterpretInk(const InkStroke& ink, const SketchRecognizerPreferences& preferences,
                                    std::span<Curve* const> earlier = {});

/// The curves of a reading as the hand drew them, before anything was made exact: for each line and open arc
/// the one of least squares through its ink, lines up to the corner in which they meet; null for the others.
/// They tell how far the ink was from what the reading says (ConstraintOptions::drawn). Throws "CurvesAsDrawn
/// - out of memory" or the text of the curve that got none.
TESSERA_API std::vector<std::unique_ptr<Curve>> CurvesAsDrawn(const InkStroke& ink,
                                                              const InkReading& reading);

} // namespace Tessera::Geometry
