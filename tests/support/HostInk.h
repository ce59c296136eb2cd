// Pen strokes for the ink entry, the entry's calls, and what documents hold.
#pragma once

#include "tessera/host/ScriptorRecog.h"
#include "tests/support/HostProbe.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

using Ink = std::vector<tagGPosition2d>;

/// A pen that samples its way every two units.
class Pen {
public:
    Pen(double x, double y) : ink{{x, y}} {}
    Pen& To(double x, double y) {
        const tagGPosition2d from = ink.back();
        const int n = static_cast<int>(std::ceil(std::hypot(x - from.x, y - from.y) / 2.0));
        for (int i = 1; i <= n; ++i)
            ink.push_back({from.x + (x - from.x) * i / n, from.y + (y - from.y) * i / n});
        return *this;
    }
    /// Along an ellipse with radii a and b; degrees.
    Pen& Round(double x, double y, double a, double b, double from, double to) {
        const int n = static_cast<int>(std::ceil((a + b) * std::fabs(to - from) * std::numbers::pi / 720));
        for (int i = 1; i <= n; ++i) {
            const double t = (from + (to - from) * i / n) * std::numbers::pi / 180;
            ink.push_back({x + a * std::cos(t), y + b * std::sin(t)});
        }
        return *this;
    }
    Ink ink;
};

inline Ink RoundInk(double x, double y, double a, double b, double from, double to) {
    const double t = from * std::numbers::pi / 180;
    return Pen(x + a * std::cos(t), y + b * std::sin(t)).Round(x, y, a, b, from, to).ink;
}
inline Ink RectangleInk(double x = 0, double y = 0) {
    return Pen(x, y).To(x + 200, y + 2).To(x + 198, y + 120).To(x + 1, y + 118).To(x + 1, y + 1).ink;
}
/// Scratching from x0 to x1 about y.
inline Ink ScratchInk(double x0, double x1, double y, double height = 30) {
    constexpr int kLegs = 12;
    Pen pen(x0, y - height);
    for (int i = 1; i <= kLegs; ++i)
        pen.To(x0 + (x1 - x0) * i / kLegs, i % 2 == 0 ? y - height : y + height);
    return pen.ink;
}
inline Ink WaveInk() {
    Ink ink;
    for (int i = 0; i <= 200; ++i) {
        const double t = i / 200.0;
        ink.push_back({500 * t, 40 * std::sin(9 * t) * std::exp(-t)});
    }
    return ink;
}

/// One call of the ink entry with its result.
class Conversion {
public:
    /// @param arm called right before the entry
    Conversion(
        const Document& document, const Ink& ink, HostInkOptions options = DefaultOptions(),
        const std::function<void()>& arm = [] {}) {
        std::vector<double> times;
        for (std::size_t i = 0; i < ink.size(); ++i)
            times.push_back(0.01 * static_cast<double>(i));
        const HostInkStroke stroke{sizeof(stroke), static_cast<std::int32_t>(ink.size()), 0, ink.data(),
                                   times.data()};
        result.size = sizeof(result);
        arm();
        code = ConvertInkingStrokeToGeometry(&stroke, document.get(), &options, &result);
    }
    ~Conversion() { TesseraHost_ReleaseInkResult(&result); }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    static HostInkOptions DefaultOptions() {
        HostInkOptions options{};
        options.size = sizeof(options);
        return options;
    }

    std::int32_t code = 0;
    HostInkResult result{};
};

inline std::vector<HostElement2d> ElementsOf(const Document& document) {
    std::vector<HostElement2d> all(static_cast<std::size_t>(TesseraHost_AskElementCount(document.get())));
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(TesseraHost_AskElementAt(document.get(), static_cast<int>(i), &all[i]), 0);
    return all;
}
inline std::vector<HostConstraint2d> ConstraintsOf(const Document& document) {
    std::vector<HostConstraint2d> all(
        static_cast<std::size_t>(TesseraHost_AskConstraintCount(document.get())));
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(TesseraHost_AskConstraintAt(document.get(), static_cast<int>(i), &all[i]), 0);
    return all;
}
inline int CountOf(const Document& document, std::int32_t kind) {
    int count = 0;
    for (const HostConstraint2d& c : ConstraintsOf(document))
        count += c.kind == kind ? 1 : 0;
    return count;
}
/// Largest error of all constraints of the document.
inline double WorstError(const Document& document) {
    double worst = 0;
    for (const HostConstraint2d& c : ConstraintsOf(document)) {
        double error = 0;
        EXPECT_EQ(TesseraHost_AskConstraintError(document.get(), c.id, &error), 0);
        worst = std::max(worst, error);
    }
    return worst;
}
inline tagGPosition2d PointOf(const Document& document, HostElementId element, double t) {
    tagGPosition2d p{};
    EXPECT_EQ(TesseraHost_EvaluateElement(document.get(), element, t, &p), 0);
    return p;
}
/// All numbers of the document, to see whether anything has changed.
inline std::vector<double> Contents(const Document& document) {
    std::vector<double> numbers;
    const auto add = [&](auto... values) { (numbers.push_back(static_cast<double>(values)), ...); };
    for (const HostElement2d& e : ElementsOf(document)) {
        add(e.id, e.kind, e.radius);
        for (const tagGPosition2d& p : e.points)
            add(p.x, p.y);
        for (int i = 0; i < e.poleCount; ++i)
            add(e.poles[i].x, e.poles[i].y);
    }
    for (const HostConstraint2d& c : ConstraintsOf(document)) {
        add(c.id, c.kind);
        for (const HostConstraintMember& m : c.members)
            add(m.element, m.point);
    }
    return numbers;
}

} // namespace Tessera::Testing
