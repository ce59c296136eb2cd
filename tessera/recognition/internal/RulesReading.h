// RulesReading - what the recogniser's rules alone make of a stroke, at the size at which their tolerances
// fit.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RoundShape.h"

namespace Tessera::Geometry {

/// The rules' tolerances suit a drawing whose box along the ink has a diagonal of some forty-five units; the
/// ink is brought to that size and the curves are mapped back. With curveTidy closed round strokes are
/// closed. The stroke is borrowed.
class RulesReading {
public:
    RulesReading(const InkStroke& ink, const SketchRecognizerPreferences& preferences);

    /// Whether the rules saw no other kind of curve in the middle of the ink that it stands for.
    bool SawKindOf(const InterpretedCurve& made) const;

    /// The curves in model units, borrowed; what asks for chains and rounds comes before. With
    /// `withoutCrumbs` those that are short beside the longest piece are left out.
    std::vector<const InterpretedCurve*> Curves(bool withoutCrumbs);
    /// The same as a reading of their copies, with deviations; joins nothing.
    void Read(bool withoutCrumbs, InkReading& reading);

    /// The pieces' ends and kinds as a chain, priced like any other; nothing unless all pieces are lines and
    /// arcs.
    std::vector<Chain> AsChains(const PricedPath& ink) const;

    /// The full circle or ellipse that the stroke was closed as, priced like any other; nothing where it was
    /// not.
    std::optional<RoundShape> AsRound(const PricedPath& ink) const;

    /// Of a curve's kind, for the ink it stands for; model units.
    double ToleranceOf(const InterpretedCurve& made) const;
    /// Whether a curve of another reading lies farther from its ink than `allowed` and its tolerance. Ink
    /// within `ends` of either end of the stroke, along the ink, does not count: a shape that closes cuts it
    /// off, as it does hooks. Model units.
    bool Strays(const InkReading& reading, double allowed, double ends) const;
    /// Largest distance from a line along the whole ink, as a share of its length.
    double LineShare() const;
    /// Largest gap between the ends of closed ink of the given length (model units), as a share of it.
    double ClosingShare(double length) const;

private:
    void BringToModel();
    double LengthOf(int firstSample, int lastSample) const; // at working size

    const InkStroke& ink_;
    SketchRecognizerPreferences preferences_; ///< at working size
    double x_ = 0.0, y_ = 0.0, scale_ = 1.0;  // working = scale (model - (x, y))
    std::vector<double> lengthTo_;            // of the ink up to each sample, working size
    std::vector<InterpretedCurve> pieces_;    // at working size until they are asked for
    bool areInModel_ = false;
};

} // namespace Tessera::Geometry
