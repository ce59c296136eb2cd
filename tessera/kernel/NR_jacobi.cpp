#include <cmath>
#include <cstddef>
#include <limits>

#include "tessera/kernel/NR.h"

// Cyclic Jacobi: every rotation clears one off-diagonal element; the sum of their squares falls quadratically
// once it is small. Slower than QR for large n, yet the most accurate way for the small matrices of the fits:
// tiny eigenvalues of graded matrices keep their digits. An element is cleared without a rotation once it is
// below the rounding of the geometric mean of its two diagonal elements, which is what keeps those digits.

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

struct SymmetricMatrix {
    int n;
    double* a; // upper triangle
    double& At(int i, int j) {
        return i <= j ? a[static_cast<std::ptrdiff_t>(i) * n + j] : a[static_cast<std::ptrdiff_t>(j) * n + i];
    }
};

// Rotation in the plane (p, q) that clears element (p, q).
struct Rotation {
    double t, s, tau; // tangent, sine, s / (1 + cosine)

    Rotation(double app, double apq, double aqq) {
        const double theta = 0.5 * (aqq - app) / apq;
        t = 1.0 / (std::fabs(theta) + std::hypot(1.0, theta));
        if (theta < 0.0)
            t = -t;
        const double c = 1.0 / std::sqrt(1.0 + t * t);
        s = t * c;
        tau = s / (1.0 + c);
    }
    void Apply(double& x, double& y) const {
        const double oldX = x, oldY = y;
        x = oldX - s * (oldY + tau * oldX);
        y = oldY + s * (oldX - tau * oldY);
    }
};

// Returns whether a rotation was needed.
bool ClearElement(SymmetricMatrix m, int p, int q, double* vectors) {
    const double apq = m.At(p, q);
    if (apq == 0.0)
        return false;
    const double app = m.At(p, p), aqq = m.At(q, q);
    if (std::fabs(apq) <= kEpsilon * std::sqrt(std::fabs(app)) * std::sqrt(std::fabs(aqq))) {
        m.At(p, q) = 0.0;
        return false;
    }
    const Rotation rotation(app, apq, aqq);
    m.At(p, p) = app - rotation.t * apq;
    m.At(q, q) = aqq + rotation.t * apq;
    m.At(p, q) = 0.0;
    for (int i = 0; i < m.n; ++i) {
        if (i != p && i != q)
            rotation.Apply(m.At(i, p), m.At(i, q));
        double* row = vectors + static_cast<std::ptrdiff_t>(i) * m.n;
        rotation.Apply(row[p], row[q]);
    }
    return true;
}

} // namespace

int NR_jacobi_eigen(int n, double* a, int maxSweeps, double* values, double* vectors) {
    SymmetricMatrix m{n, a};
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            vectors[static_cast<std::ptrdiff_t>(i) * n + j] = i == j ? 1.0 : 0.0;
        for (int j = i; j < n; ++j)
            if (!std::isfinite(m.At(i, j)))
                return 0;
    }
    bool isDiagonal = n == 1;
    for (int sweep = 0; sweep < maxSweeps && !isDiagonal; ++sweep) {
        isDiagonal = true;
        for (int p = 0; p + 1 < n; ++p)
            for (int q = p + 1; q < n; ++q)
                if (ClearElement(m, p, q, vectors))
                    isDiagonal = false;
    }
    for (int i = 0; i < n; ++i)
        values[i] = m.At(i, i);
    return isDiagonal ? 1 : 0;
}
