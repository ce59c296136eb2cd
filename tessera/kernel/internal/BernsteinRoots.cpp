#include "tessera/kernel/internal/BernsteinRoots.h"

#include <algorithm>
#include <array>
#include <cmath>

// Sign changes are isolated by bisection: the number of sign variations of the coefficients bounds the number
// of roots and has the same parity, so none means none and one means exactly one. Variations die out within a
// few halvings except at multiple roots, where the bisection ends at a fixed width.

namespace Bernstein {
namespace {

constexpr int kMaxHalvings = 40; // 2^-40 is below 1e-12 of the interval

// Binomial coefficients, row after row; row n starts at n (n + 1) / 2.
struct BinomialTable {
    std::array<double, (kMaxDegree + 1) * (kMaxDegree + 2) / 2> value{};
    constexpr BinomialTable() {
        for (std::size_t n = 0; n <= kMaxDegree; ++n) {
            const std::size_t row = n * (n + 1) / 2;
            value[row] = 1.0;
            value[row + n] = 1.0;
            for (std::size_t i = 1; i < n; ++i)
                value[row + i] = value[row - n + i - 1] + value[row - n + i];
        }
    }
};
constexpr BinomialTable kBinomials;

const double* Binomials(int n) {
    return kBinomials.value.data() + n * (n + 1) / 2;
}

struct Signs {
    int variations = 0;
    bool allNoise = true;
};

Signs CountVariations(const double* c, int degree, double noise) {
    Signs signs;
    double last = 0.0;
    for (int i = 0; i <= degree; ++i) {
        if (std::fabs(c[i]) <= noise)
            continue;
        signs.allNoise = false;
        if (last * c[i] < 0.0)
            ++signs.variations;
        last = c[i] > 0.0 ? 1.0 : -1.0;
    }
    return signs;
}

// Bisection over one polynomial; collects its answers in order.
class Isolation {
public:
    Isolation(int degree, double noise, double* out) : degree_(degree), noise_(noise), out_(out) {}

    void Search(const double* c, double from, double width, int halvings) {
        const Signs signs = CountVariations(c, degree_, noise_);
        if (signs.allNoise) {
            Emit(from + 0.5 * width);
            return;
        }
        if (signs.variations == 0)
            return;
        if (signs.variations == 1 && c[0] * c[degree_] < 0.0) {
            Emit(from + width * BracketedRoot(c, degree_, 0.0, c[0], 1.0, c[degree_]));
            return;
        }
        if (halvings == kMaxHalvings) {
            Emit(from + 0.5 * width);
            return;
        }
        double left[kMaxCoefficients], right[kMaxCoefficients];
        Split(c, degree_, 0.5, left, right);
        const double half = 0.5 * width;
        Search(left, from, half, halvings + 1);
        // A root on the cut itself is seen by neither side.
        if (std::fabs(right[0]) <= noise_)
            Emit(from + half);
        Search(right, from + half, half, halvings + 1);
    }

    int Count() const { return count_; }

private:
    void Emit(double t) {
        if (count_ < kMaxCoefficients && (count_ == 0 || t > out_[count_ - 1]))
            out_[count_++] = t;
    }

    int degree_;
    double noise_;
    double* out_;
    int count_ = 0;
};

} // namespace

double Value(const double* c, int degree, double t) {
    if (degree == 0)
        return c[0];
    const double u = 1.0 - t;
    const double* binomial = Binomials(degree);
    double power = 1.0, sum = c[0] * u;
    for (int i = 1; i < degree; ++i) {
        power *= t;
        sum = (sum + power * binomial[i] * c[i]) * u;
    }
    return sum + power * t * c[degree];
}

void Derivative(const double* c, int degree, double* out) {
    for (int i = 0; i < degree; ++i)
        out[i] = degree * (c[i + 1] - c[i]);
}

void Product(const double* f, int m, const double* g, int n, double* out) {
    const double *bm = Binomials(m), *bn = Binomials(n), *bmn = Binomials(m + n);
    double scaled[kMaxCoefficients];
    for (int j = 0; j <= n; ++j)
        scaled[j] = bn[j] * g[j];
    std::fill(out, out + m + n + 1, 0.0);
    for (int i = 0; i <= m; ++i) {
        const double fi = bm[i] * f[i];
        for (int j = 0; j <= n; ++j)
            out[i + j] += fi * scaled[j];
    }
    for (int k = 0; k <= m + n; ++k)
        out[k] /= bmn[k];
}

void Split(const double* c, int degree, double t, double* left, double* right) {
    std::copy(c, c + degree + 1, right);
    for (int i = 0; i <= degree; ++i) {
        left[i] = right[0];
        for (int j = 0; j < degree - i; ++j)
            right[j] = (1.0 - t) * right[j] + t * right[j + 1];
    }
}

double BracketedRoot(const double* c, int degree, double a, double fa, double b, double fb) {
    if (fa == 0.0)
        return a;
    if (fb == 0.0)
        return b;
    // b is always the newest point and a the end across the root; fa is weighted down while a stays.
    double checkedWidth = std::fabs(b - a);
    for (int step = 1; step <= 150; ++step) {
        double t = b - fb * (b - a) / (fb - fa);
        if (step % 4 == 0) { // secant steps that do not shrink the bracket are followed by a bisection
            if (std::fabs(b - a) > 0.5 * checkedWidth)
                t = 0.5 * (a + b);
            checkedWidth = std::fabs(b - a);
        }
        if (!(t > std::min(a, b) && t < std::max(a, b)))
            t = 0.5 * (a + b);
        if (t == a || t == b)
            break;
        const double f = Value(c, degree, t);
        if (f == 0.0)
            return t;
        if ((f < 0.0) != (fb < 0.0)) {
            a = b;
            fa = fb;
        } else {
            const double weight = 1.0 - f / fb;
            fa *= weight > 0.0 ? weight : 0.5;
        }
        b = t;
        fb = f;
        if (std::fabs(b - a) <= 1e-16)
            break;
    }
    return b; // not the end with the smaller value: that may be rounding about a root outside
}

int SignChanges(const double* c, int degree, double noise, double* out) {
    Isolation isolation(degree, noise, out);
    isolation.Search(c, 0.0, 1.0, 0);
    return isolation.Count();
}

} // namespace Bernstein
