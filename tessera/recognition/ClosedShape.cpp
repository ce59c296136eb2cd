#include "tessera/recognition/ClosedShape.h"

#include <memory>
#include <utility>

#include "tessera/recognition/internal/FullShape.h"
#include "tessera/recognition/internal/ReportErrors.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tessera/recognition/internal/StrokePiece.h"

namespace Tessera::Geometry {

namespace {

// One spline over samples 0 to last, or nothing: pieces and plain curves are answers already.
bool IsUndecided(const std::vector<RecognizedGeometry*>& results, int last) {
    if (results.empty())
        return true;
    const RecognizedGeometry& only = *results.front();
    return results.size() == 1 && only.GetResult().GetType() == CurveType_Spline &&
           only.GetStartIndex() == 0 && only.GetEndIndex() == last;
}

bool TryClose(SketchRecognizer& recognizer) {
    const SketchRecognizerAccess access{recognizer};
    const std::vector<StrokePoint>& points = access.Points();
    const int last = static_cast<int>(points.size()) - 1;
    if (last < 1 || !IsUndecided(recognizer.GetResults(), last) ||
        !(points.front().Distance(points.back()) <= recognizer.AskClosedStrokeTolerance()))
        return false;
    StrokePiece piece;
    if (!access.TakePiece(0, last, piece))
        return false;
    double maxDev = 0.0;
    std::unique_ptr<Curve> shape = FitFullShape(piece, &maxDev);
    if (!shape)
        return false;
    access.AppendResult(std::move(shape), piece, maxDev);
    if (recognizer.GetResults().size() > 1)
        access.DeleteResult(0);
    return true;
}

} // namespace

bool CloseRoundStroke(SketchRecognizer& recognizer) {
    bool isClosed = false;
    ReportErrors([&] { isClosed = TryClose(recognizer); });
    return isClosed;
}

} // namespace Tessera::Geometry
