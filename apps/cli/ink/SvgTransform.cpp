#include "apps/cli/ink/SvgTransform.h"

#include <cmath>
#include <numbers>

#include "apps/cli/ink/NumberText.h"

namespace Tessera::Tool {

namespace {

constexpr std::string_view kSeparators = " \t\r\n,";

std::vector<double> TakeArguments(std::string_view text) {
    std::vector<double> values;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
        if (text.empty()) {
            return values;
        }
        const std::optional<double> value = TakeNumber(text);
        if (!value) {
            throw InkError("transform: \"" + std::string(text.substr(0, 20)) + "\" is not a number");
        }
        values.push_back(*value);
    }
}

SvgTransform Rotation(double angleDeg) {
    const double angle = angleDeg * std::numbers::pi / 180.0;
    return {std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0.0, 0.0};
}

SvgTransform FromOperation(std::string_view name, const std::vector<double>& v) {
    const double radPerDeg = std::numbers::pi / 180.0;
    if (name == "matrix" && v.size() == 6) {
        return {v[0], v[1], v[2], v[3], v[4], v[5]};
    }
    if (name == "translate" && (v.size() == 1 || v.size() == 2)) {
        return {1.0, 0.0, 0.0, 1.0, v[0], v.size() == 2 ? v[1] : 0.0};
    }
    if (name == "scale" && (v.size() == 1 || v.size() == 2)) {
        return {v[0], 0.0, 0.0, v.size() == 2 ? v[1] : v[0], 0.0, 0.0};
    }
    if (name == "rotate" && v.size() == 1) {
        return Rotation(v[0]);
    }
    if (name == "rotate" && v.size() == 3) {
        return SvgTransform{1.0, 0.0, 0.0, 1.0, v[1], v[2]} * Rotation(v[0]) *
               SvgTransform{1.0, 0.0, 0.0, 1.0, -v[1], -v[2]};
    }
    if (name == "skewX" && v.size() == 1) {
        return {1.0, 0.0, std::tan(v[0] * radPerDeg), 1.0, 0.0, 0.0};
    }
    if (name == "skewY" && v.size() == 1) {
        return {1.0, std::tan(v[0] * radPerDeg), 0.0, 1.0, 0.0, 0.0};
    }
    throw InkError("transform: " + std::string(name) + " with " + std::to_string(v.size()) + " arguments");
}

} // namespace

SvgTransform SvgTransform::operator*(const SvgTransform& inner) const {
    return {a * inner.a + c * inner.b, b * inner.a + d * inner.b,     a * inner.c + c * inner.d,
            b * inner.c + d * inner.d, a * inner.e + c * inner.f + e, b * inner.e + d * inner.f + f};
}

SvgTransform ParseSvgTransform(std::string_view text) {
    SvgTransform result;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
        if (text.empty()) {
            return result;
        }
        const std::size_t open = text.find('(');
        const std::size_t close = text.find(')');
        if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
            throw InkError("transform: no pair of brackets");
        }
        std::string_view name = text.substr(0, open);
        name = name.substr(0, name.find_last_not_of(" \t\r\n") + 1);
        result = result * FromOperation(name, TakeArguments(text.substr(open + 1, close - open - 1)));
        text.remove_prefix(close + 1);
    }
}

} // namespace Tessera::Tool
