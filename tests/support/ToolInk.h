// Drawings for the tests of the tool.
#pragma once

#include "apps/cli/ink/Ink.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tests/support/ExpectNear.h"
#include "tests/support/Test.h"

namespace Tessera::Tool {

using Testing::ExpectNear;

inline constexpr double kTurn = 2.0 * std::numbers::pi;

/// What the call refuses with; "accepted" when it does not.
template <class Error, class Call>
std::string RefusalOf(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "accepted";
}

inline InkStroke StrokeThrough(const std::vector<Position>& points) {
    InkStroke stroke;
    for (const Position& p : points)
        stroke.samples.push_back({p.x, p.y, 0.0});
    return stroke;
}

/// A poly-line drawn by a pen.
inline InkStroke Drawn(const std::vector<Position>& corners) {
    InkStroke stroke;
    for (std::size_t c = 0; c + 1 < corners.size(); ++c)
        for (int i = c == 0 ? 0 : 1; i <= 30; ++i) {
            const double f = i / 30.0;
            stroke.samples.push_back({corners[c].x + f * (corners[c + 1].x - corners[c].x),
                                      corners[c].y + f * (corners[c + 1].y - corners[c].y), 0.0});
        }
    return stroke;
}

/// To and fro between y - half and y + half, from x0 to x1.
inline InkStroke Scratch(double x0, double x1, double y, double half) {
    std::vector<Position> corners;
    for (int i = 0; i <= 8; ++i)
        corners.push_back({x0 + (x1 - x0) * i / 8.0, y + (i % 2 == 0 ? -half : half)});
    return Drawn(corners);
}

inline Drawing DrawingOf(std::vector<InkStroke> strokes) {
    Drawing drawing;
    drawing.strokes = std::move(strokes);
    return drawing;
}

inline Position OnEllipse(const EllipseShape& e, double t) {
    const double u = e.radii[0] * std::cos(t), v = e.radii[1] * std::sin(t);
    return {e.center.x + u * std::cos(e.rotation) - v * std::sin(e.rotation),
            e.center.y + u * std::sin(e.rotation) + v * std::cos(e.rotation)};
}

/// "x,y x,y | x,y": the strokes of a drawing, with @t behind the coordinates of timed ones.
inline std::string TextOf(const Drawing& drawing) {
    std::ostringstream text;
    for (const InkStroke& stroke : drawing.strokes) {
        text << (&stroke == drawing.strokes.data() ? "" : "| ");
        for (const Sample& s : stroke.samples) {
            text << s.x << ',' << s.y;
            if (stroke.isTimed)
                text << '@' << s.timeMs;
            text << ' ';
        }
    }
    std::string result = text.str();
    return result.substr(0, result.find_last_not_of(' ') + 1);
}

/// The same drawing in other units.
inline Drawing Scaled(Drawing drawing, double factor) {
    for (InkStroke& stroke : drawing.strokes)
        for (Sample& sample : stroke.samples)
            sample = {factor * sample.x, factor * sample.y, sample.timeMs};
    return drawing;
}

} // namespace Tessera::Tool
