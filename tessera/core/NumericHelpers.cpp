// ComposeMirrorTransform needs points and is defined in tessera/geometry/MirrorTransform.cpp.
#include "tessera/core/NumericHelpers.h"

#include <cmath>
#include <cstddef>

#include "tessera/core/internal/Statistics.h"

namespace Tessera::Core {

namespace {

constexpr double kOutlierDeviations = 2.0;

struct Moments {
    std::size_t count = 0;
    double mean = 0.0;
    double stdDev = 0.0;
};

// Mean and population standard deviation of the values that `isKept` accepts, in order.
template <class IsKept>
Moments MomentsOf(std::span<const double> values, IsKept isKept) {
    Moments moments;
    double sum = 0.0;
    for (const double value : values) {
        if (isKept(value)) {
            sum += value;
            ++moments.count;
        }
    }
    if (moments.count == 0) {
        return moments;
    }
    const auto n = static_cast<double>(moments.count);
    moments.mean = sum / n;
    double squares = 0.0;
    for (const double value : values) {
        if (isKept(value)) {
            squares += (value - moments.mean) * (value - moments.mean);
        }
    }
    moments.stdDev = std::sqrt(squares / n);
    return moments;
}

Moments MomentsOfAll(std::span<const double> values) {
    return MomentsOf(values, [](double) { return true; });
}

bool Report(const Moments& moments, double* mean, double* stdDev) {
    if (moments.count == 0) {
        return false;
    }
    if (mean != nullptr) {
        *mean = moments.mean;
    }
    if (stdDev != nullptr) {
        *stdDev = moments.stdDev;
    }
    return true;
}

} // namespace

bool MeanAndStdDev(std::span<const double> values, double* mean, double* stdDev) {
    return Report(MomentsOfAll(values), mean, stdDev);
}

bool MeanAndStdDevWithOutlierRejection(std::span<const double> values, double* mean, double* stdDev) {
    const Moments all = MomentsOfAll(values);
    const double low = all.mean - kOutlierDeviations * all.stdDev;
    const double high = all.mean + kOutlierDeviations * all.stdDev;
    const auto isKept = [low, high](double value) { return low <= value && value <= high; };
    for (const double value : values) {
        if (!isKept(value)) {
            return Report(MomentsOf(values, isKept), mean, stdDev);
        }
    }
    return Report(all, mean, stdDev);
}

void ComposeIdentityTransform(double M[3][3]) {
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
            M[row][col] = row == col ? 1.0 : 0.0;
        }
    }
}

void ComposeScaleTransform(double* centre, double s, double M[3][3]) {
    const double w = 1.0 / s;
    const double shift[2] = {(w - 1.0) * centre[0], (w - 1.0) * centre[1]};
    ComposeIdentityTransform(M);
    M[0][2] = shift[0];
    M[1][2] = shift[1];
    M[2][2] = w;
}

bool FindMeanAndStdDev(std::vector<double>& v, double* mean, double* stdDev) {
    return MeanAndStdDev(v, mean, stdDev);
}

bool FindMeanAndStdDevWithOutlierRejection(std::vector<double>& v, double* mean, double* stdDev) {
    return MeanAndStdDevWithOutlierRejection(v, mean, stdDev);
}

bool FindRange(std::vector<double>& v, double range[2]) {
    if (v.empty()) {
        return false;
    }
    double low = v.front();
    double high = v.front();
    for (const double value : v) {
        if (value < low) {
            low = value;
        } else if (value > high) {
            high = value;
        }
    }
    if (range != nullptr) {
        range[0] = low;
        range[1] = high;
    }
    return true;
}

bool PointInPolygon(double x, double y, int n, double* xs, double* ys) {
    if (n < 3) {
        return false;
    }
    bool isInside = false;
    for (int i = 0, j = n - 1; i < n; j = i++) {
        const bool isCrossing = (ys[i] > y) != (ys[j] > y);
        if (isCrossing && xs[i] + (xs[j] - xs[i]) * (y - ys[i]) / (ys[j] - ys[i]) > x) {
            isInside = !isInside;
        }
    }
    return isInside;
}

} // namespace Tessera::Core
