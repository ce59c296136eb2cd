#include "tessera/kernel/BCDF.h"

#include <cstring>

#include "tessera/kernel/BCEV.h"

// Poles are positions with a separate weight, so an affine map acts on them directly and the weights
// never change.

BCURVE_DATA* BCDF_copy_bcdf_data(const BCURVE_DATA* d) {
    if (!d)
        return nullptr;
    BCURVE_DATA* copy = BCEV_alloc_bcurve_data(d->numPoles, d->order);
    if (!copy)
        return nullptr;
    const auto n = static_cast<std::size_t>(d->numPoles), order = static_cast<std::size_t>(d->order);
    std::memcpy(copy->knots, d->knots, (n + order) * sizeof(double));
    std::memcpy(copy->poles, d->poles, n * sizeof(*d->poles));
    copy->periodic = d->periodic;
    copy->polynomial = d->polynomial;
    return copy;
}

void BCDF_transform_bcdf_data(BCURVE_DATA* d, const Vex::Math::TransformMatrix* matrix) {
    if (!d || !matrix)
        return;
    const auto& m = matrix->m;
    for (int i = 0; i < d->numPoles; ++i) {
        double* pole = d->poles[i];
        const double x = pole[0], y = pole[1], z = pole[2];
        for (int row = 0; row < 3; ++row)
            pole[row] = m[row][0] * x + m[row][1] * y + m[row][2] * z + m[row][3];
    }
}

void BCDF_update_polynomial_flag(BCURVE_DATA* d) {
    if (!d)
        return;
    d->polynomial = 1;
    for (int i = 0; i < d->numPoles; ++i)
        if (!(d->poles[i][3] == 1.0)) // not "!=": a NaN weight must clear the flag
            d->polynomial = 0;
}
