#include "apps/cli/write/GlyphLayout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <tuple>
#include <unordered_set>

#include "apps/cli/recognize/CurveShapes.h"
#include "apps/cli/write/ConstraintAnchors.h"
#include "apps/cli/write/CurveText.h"

namespace Tessera::Tool {

namespace {

using Geometry::ConstraintKind_e;
using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

// All lengths here are in units of a glyph's size.
constexpr double kCell = 0.25;
constexpr double kHalf = 0.55;   ///< of the square that a glyph keeps for itself
constexpr double kBeside = 0.95; ///< from the curve to the glyph's middle
constexpr double kStep = 1.2;    ///< from glyph to glyph in a row, and from row to row
constexpr int kSteps = 6;        ///< of a row to either side
constexpr int kRows = 4;         ///< in the order of trial
constexpr double kRowOffsets[kRows] = {kBeside, -kBeside, kBeside + kStep, -kBeside - kStep};
constexpr double kPerStep = 1.0; ///< as bad as covering so many cells of geometry
constexpr double kPerRow = 1.5;
constexpr std::size_t kChords = 4000; ///< of one curve at the most

/// Square cells, some of them taken.
class Cells {
public:
    void Take(const Point& p) { taken_.insert(Key(Index(p.x), Index(p.y))); }
    void TakeSquare(const Point& p) {
        ForSquare(p, [this](std::int64_t key) { taken_.insert(key); });
    }
    int CountTaken(const Point& p) const {
        int count = 0;
        ForSquare(p, [&](std::int64_t key) { count += taken_.count(key) > 0 ? 1 : 0; });
        return count;
    }

private:
    static std::int64_t Index(double x) {
        constexpr double kFarthest = 1e9; // whatever lies beyond shares a cell
        return static_cast<std::int64_t>(std::floor(std::clamp(x / kCell, -kFarthest, kFarthest)));
    }
    static std::int64_t Key(std::int64_t x, std::int64_t y) { return x * (std::int64_t{1} << 32) + y; }
    template <class Use>
    static void ForSquare(const Point& p, const Use& use) {
        for (std::int64_t x = Index(p.x - kHalf); x <= Index(p.x + kHalf); ++x) {
            for (std::int64_t y = Index(p.y - kHalf); y <= Index(p.y + kHalf); ++y) {
                use(Key(x, y));
            }
        }
    }

    std::unordered_set<std::int64_t> taken_;
};

/// "parallel: 0.1 and 0.3": curves by stroke and place in it.
std::string Meaning(const RecognizedConstraint& constraint) {
    std::string text = Spaced(kConstraintNames[constraint.kind]) + ":";
    for (std::size_t i = 0; i < constraint.elements.size(); ++i) {
        const DrawingElement& element = constraint.elements[i];
        text += (i == 0 ? " " : " and ") + std::to_string(element.place.stroke) + "." +
                std::to_string(element.place.curve);
        if (element.point != Geometry::SnapPointType_None) {
            text += std::string(" ") + kPointNames[element.point];
        }
    }
    return text;
}

class GlyphBoard {
public:
    GlyphBoard(const RecognizedDrawing& drawing, double size)
        : frame_{Origin(drawing), 1.0 / size, 0.0}, anchors_(drawing, frame_) {
        for (const auto& stroke : anchors_.Curves()) {
            for (const std::unique_ptr<Curve>& curve : stroke) {
                TakeCurve(*curve);
            }
        }
        if (drawing.dimensions) {
            TakeDimensions(*drawing.dimensions);
        }
    }

    /// The glyphs that show the constraint. One that stands there already stands for this one too.
    void Add(const RecognizedConstraint& constraint) {
        const std::string meaning = Meaning(constraint);
        for (const GlyphAnchor& anchor : anchors_.Of(constraint)) {
            Add(constraint.kind, anchor, meaning);
        }
    }

    std::vector<PlacedGlyph> Take() { return std::move(glyphs_); }

private:
    /// What every coordinate is taken from, so that drawings far from the origin keep their digits.
    static Position Origin(const RecognizedDrawing& drawing) {
        for (const InkStroke& stroke : drawing.ink.strokes) {
            if (!stroke.samples.empty()) {
                return {stroke.samples[0].x, stroke.samples[0].y};
            }
        }
        return {};
    }

    void TakeCurve(const Curve& curve) {
        const double chords = std::ceil(curve.Length() / kCell);
        const auto n = static_cast<std::size_t>(std::clamp(chords, 2.0, double{kChords}));
        std::vector<Point> points;
        curve.CreatePolylinePoints(static_cast<int>(n) + 1, points);
        for (const Point& p : points) {
            lines_.Take(p);
        }
    }

    void TakeDimensions(const std::vector<DrawnDimension>& dimensions) {
        for (const DrawnDimension& dimension : dimensions) {
            const double height = dimension.fontHeight * frame_.scale;
            const double half = 0.25 * height * static_cast<double>(dimension.text.size());
            const Position middle = frame_.ToWorking(dimension.position);
            const Vector along(std::cos(dimension.textAngle), std::sin(dimension.textAngle));
            const int squares = 1 + static_cast<int>(std::ceil(half / kHalf));
            for (int i = 0; i <= 2 * squares; ++i) {
                const double s = half * (i - squares) / squares;
                texts_.TakeSquare({middle.x + s * along.x, middle.y + s * along.y});
            }
            for (const CurveShape& line : dimension.lines) {
                TakeCurve(*CurveOf(line, frame_));
            }
        }
    }

    void Add(ConstraintKind_e kind, const GlyphAnchor& anchor, const std::string& meaning) {
        const auto rounded = [](double x) { return std::floor(x * 100.0 + 0.5); };
        const auto [known, isNew] = known_.try_emplace(
            {static_cast<int>(kind), rounded(anchor.place.x), rounded(anchor.place.y)}, glyphs_.size());
        if (!isNew) {
            glyphs_[known->second].meaning += "\n" + meaning;
            return;
        }
        const Point center = FindPlace(anchor, kind == Geometry::ConstraintKind_Coincident);
        glyphs_.push_back({kind, frame_.ToInk({center.x, center.y}), meaning});
    }

    /// The place that covers least, near ones before far ones.
    Point FindPlace(const GlyphAnchor& anchor, bool isFixed) {
        if (isFixed) {
            texts_.Take(anchor.place);
            return anchor.place;
        }
        Point best = anchor.place;
        double least = anchor.isOn && texts_.CountTaken(best) == 0 ? 0.0 : INFINITY;
        const Vector along(anchor.away.y, -anchor.away.x);
        for (int row = 0; row < kRows; ++row) {
            const double offset = kRowOffsets[row];
            for (int step = 0; step <= 2 * kSteps; ++step) {
                const double distance = kPerRow * row + kPerStep * step;
                if (distance >= least) {
                    break;
                }
                const double s = (step % 2 == 0 ? -0.5 : 0.5) * kStep * (step + step % 2);
                const Point place(anchor.place.x + offset * anchor.away.x + s * along.x,
                                  anchor.place.y + offset * anchor.away.y + s * along.y);
                const double cost = distance + lines_.CountTaken(place);
                if (cost < least && texts_.CountTaken(place) == 0) {
                    least = cost;
                    best = place;
                }
            }
        }
        texts_.TakeSquare(best);
        return best;
    }

    WorkingFrame frame_; ///< in which a glyph has the size 1
    ConstraintAnchors anchors_;
    Cells lines_;
    Cells texts_;                                                  ///< and glyphs
    std::map<std::tuple<int, double, double>, std::size_t> known_; ///< kind and anchor
    std::vector<PlacedGlyph> glyphs_;
};

} // namespace

std::vector<PlacedGlyph> PlaceGlyphs(const RecognizedDrawing& drawing, double size) {
    if (!drawing.constraints || drawing.constraints->empty()) {
        return {};
    }
    GlyphBoard board(drawing, size);
    for (const bool isDot : {true, false}) { // dots cannot give way
        for (const RecognizedConstraint& constraint : *drawing.constraints) {
            if ((constraint.kind == Geometry::ConstraintKind_Coincident) == isDot) {
                board.Add(constraint);
            }
        }
    }
    return board.Take();
}

} // namespace Tessera::Tool
