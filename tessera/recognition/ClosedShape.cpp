#include "tessera/recognition/ClosedShape.h"

#include <memory>
#include <utility>

#include "tessera/recognition/internal/FullShape.h"
#include "tessera/recognition/internal/ReportErrors.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tessera/recognition/internal/StrokePiece.h"
#include "tessera/recognition/internal/WholeStroke.h"

namespace Tessera::Geometry {

namespace {

bool TryClose(SketchRecognizer& recognizer) {
    const SketchRecognizerAccess access{recognizer};
    const std::vector<StrokePoint>& points = access.Points();
    const int last = static_cast<int>(points.size()) - 1;
    const std::vector<RecognizedGeometry*>& results = recognizer.GetResults();
    if (last < 1 || !(results.empty() || IsWholeStrokePreferred(results)) ||
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
    while (results.size() > 1)
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
