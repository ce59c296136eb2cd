// RoundedPath - points along slots and rounded rectangles, from anywhere, by walking their pieces.
#pragma once

#include "tests/support/PenPaths.h"
#include "tests/support/SegmentDistance.h"

namespace Tessera::Testing {

/// A slot where nothing is straight across.
struct RoundedPath {
    double along = 60.0; ///< half the straight lengths
    double across = 0.0;
    double radius = 30.0;
    double angle = 0.7;
    double sense = 1.0; ///< counter-clockwise positive
    Geometry::Point centre{};

    struct Piece {
        double length;
        double turn;
    };

    /// Line, arc, line, arc, and so on.
    std::vector<Piece> Pieces() const {
        const double turn = across > 0.0 ? 0.25 * kTurn : 0.5 * kTurn;
        std::vector<Piece> pieces;
        for (int i = 0; i < 4; ++i) {
            const double side = i % 2 == 0 ? along : across;
            if (side > 0.0)
                pieces.insert(pieces.end(), {{2.0 * side, 0.0}, {turn * radius, turn}});
        }
        return pieces;
    }
    double Outline() const { return 4.0 * (along + across) + kTurn * radius; }
    /// Of the outline, where a piece ends.
    double EndOf(int piece) const {
        const std::vector<Piece> pieces = Pieces();
        double length = 0.0;
        for (int i = 0; i <= piece; ++i)
            length += pieces[static_cast<std::size_t>(i)].length;
        return length / Outline();
    }
    Geometry::Point At(double turns) const {
        double left = (turns - std::floor(turns)) * Outline();
        double heading = 0.0;
        Geometry::Point p(-along, -across - radius);
        for (const Piece& piece : Pieces()) {
            const double run = std::min(left, piece.length);
            const double turned = piece.turn * run / piece.length;
            const double chord = turned > 0.0 ? 2.0 * radius * std::sin(0.5 * turned) : run;
            heading += 0.5 * turned;
            p += chord * Geometry::Point(std::cos(heading), std::sin(heading));
            heading += 0.5 * turned;
            left -= run;
        }
        const Geometry::Point axis(std::cos(angle), std::sin(angle));
        return centre + p.x * axis + sense * p.y * Geometry::Point(-axis.y, axis.x);
    }
    std::vector<Geometry::Point> Draw(double from, double turns, int count = 240) const {
        return PointsOf([this](double u) { return At(u); }, from, from + turns, count);
    }
    double SumSq(const Geometry::InkStroke& ink) const {
        const std::vector<Geometry::Point> outline = Draw(0.0, 1.0, 1000);
        double sum = 0.0;
        for (const Geometry::InkSample& s : ink.samples)
            sum += std::pow(PolylineDistance(outline, {s.x, s.y}), 2);
        return sum;
    }
};

/// A closed reading of so many lines and arcs in turn that all join tangentially.
inline bool IsRounded(const Geometry::InkReading& reading, std::size_t curves) {
    bool isInTurn = reading.curves.size() == curves;
    for (std::size_t i = 1; i < reading.curves.size(); ++i)
        isInTurn = isInTurn && reading.curves[i].curve->GetType() != reading.curves[i - 1].curve->GetType() &&
                   (reading.curves[i].curve->GetType() == Geometry::CurveType_Line ||
                    reading.curves[i].curve->GetType() == Geometry::CurveType_Arc);
    return isInTurn && reading.shape == Geometry::InkShape::Chain && reading.isClosed &&
           std::all_of(reading.joints.begin(), reading.joints.end(), [](const Geometry::InkJoint& joint) {
               return joint.kind == Geometry::JointKind::Tangent;
           });
}

} // namespace Tessera::Testing
