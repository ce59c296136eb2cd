#include "tessera/recognition/internal/FreeForm.h"

#include <algorithm>
#include <vector>

#include "tessera/geometry/Spline.h"
#include "tessera/kernel/BCRVFIT.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmFault.h"

namespace Tessera::Geometry {

std::unique_ptr<Curve> FitFreeForm(std::span<const Point> pts, bool isClosed, double tol, double* rms) {
    constexpr int kOrder = 4;
    if (pts.size() < static_cast<std::size_t>(kOrder))
        return nullptr;
    std::vector<Vex::Math::Point3> copy;
    copy.reserve(pts.size() + 1);
    for (const Point& p : pts)
        copy.push_back({p.x, p.y, 0.0});
    if (isClosed && pts.front().Distance2(pts.back()) > 0.0)
        copy.push_back(copy.front());
    const double most = 2.0 * DiagonalOf(pts);
    const long refusals = SM_ask_refusal_count();
    while (tol < most && SM_ask_refusal_count() == refusals) {
        int status = 1;
        double err[3];
        RecordPtr record(BCRVFIT_least_squares_fit(static_cast<int>(copy.size()), copy.data(), 0, nullptr,
                                                   kOrder, isClosed ? 1 : 0, BCRVFIT_KNOTS_ADAPTIVE, tol,
                                                   &status, err));
        if (!record) {
            tol *= 2.0;
            continue;
        }
        if (rms != nullptr)
            *rms = err[1];
        auto spline = std::make_unique<Spline>(record.get());
        static_cast<void>(record.release()); // now the spline's
        return spline;
    }
    return nullptr;
}

double DiagonalOf(std::span<const Point> pts) {
    Point low = pts[0];
    Point high = pts[0];
    for (const Point& p : pts) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    return low.Distance(high);
}

} // namespace Tessera::Geometry
