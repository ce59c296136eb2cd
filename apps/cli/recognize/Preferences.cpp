#include "apps/cli/recognize/Preferences.h"

#include <array>
#include <charconv>
#include <functional>
#include <optional>
#include <string_view>

namespace Tessera::Tool {

namespace {

using Geometry::SketchRecognizerPreferences;
using Record = SketchRecognizerPreferences;

/// A field: its getter's name, its value as text, and how to set it from numbers.
struct Field {
    std::string name;
    std::size_t count;
    enum Kind { Real, Integer, Switch } kind;
    std::function<std::vector<double>(const Record&)> ask;
    std::function<void(Record&, const double*)> set;
};

Field RealField(const char* name, double (Record::*get)() const, void (Record::*set)(double)) {
    return {name, 1, Field::Real, [get](const Record& r) { return std::vector<double>{(r.*get)()}; },
            [set](Record& r, const double* v) { (r.*set)(v[0]); }};
}
Field IntegerField(const char* name, int (Record::*get)() const, void (Record::*set)(int)) {
    return {name, 1, Field::Integer,
            [get](const Record& r) { return std::vector<double>{static_cast<double>((r.*get)())}; },
            [set](Record& r, const double* v) { (r.*set)(static_cast<int>(v[0])); }};
}
Field SwitchField(const char* name, bool (Record::*get)() const, void (Record::*set)(bool)) {
    return {name, 1, Field::Switch,
            [get](const Record& r) { return std::vector<double>{(r.*get)() ? 1.0 : 0.0}; },
            [set](Record& r, const double* v) { (r.*set)(v[0] != 0.0); }};
}
Field PairField(const char* name, void (Record::*get)(double*, double*) const,
                void (Record::*set)(double, double)) {
    return {name, 2, Field::Real,
            [get](const Record& r) {
                std::vector<double> v(2);
                (r.*get)(&v[0], &v[1]);
                return v;
            },
            [set](Record& r, const double* v) { (r.*set)(v[0], v[1]); }};
}
Field FourField(const char* name, void (Record::*get)(double*) const, void (Record::*set)(const double*)) {
    return {name, 4, Field::Real,
            [get](const Record& r) {
                std::vector<double> v(4);
                (r.*get)(v.data());
                return v;
            },
            [set](Record& r, const double* v) { (r.*set)(v); }};
}
/// The page scale has no getter; its product with the other two context factors has.
Field PageScaleField() {
    return {"GetPageScale", 1, Field::Real,
            [](const Record& r) {
                return std::vector<double>{r.AskContextScale() / (r.GetZoomFactor() * r.AskSpeedFactor())};
            },
            [](Record& r, const double* v) { r.SetPageScale(v[0]); }};
}

std::vector<Field> MakeFields() {
    using R = Record;
    return {
        RealField("GetZoomFactor", &R::GetZoomFactor, &R::SetZoomFactor),
        PageScaleField(),
        RealField("AskSpeedFactor", &R::AskSpeedFactor, &R::SetSpeedFactor),
        SwitchField("AskUseSpeedFactor", &R::AskUseSpeedFactor, &R::SetUseSpeedFactor),
        RealField("AskStandardSpeed", &R::AskStandardSpeed, &R::SetStandardSpeed),
        RealField("AskLinearFactorOfSpeedTol", &R::AskLinearFactorOfSpeedTol, &R::SetLinearFactorOfSpeedTol),
        IntegerField("AskSegmentationScheme", &R::AskSegmentationScheme, &R::SetSegmentationScheme),
        RealField("AskSpeed1Ratio", &R::AskSpeed1Ratio, &R::SetSpeed1Ratio),
        RealField("AskSpeed2Ratio", &R::AskSpeed2Ratio, &R::SetSpeed2Ratio),
        RealField("AskTangentAngleThreshold", &R::AskTangentAngleThreshold, &R::SetTangentAngleThreshold),
        IntegerField("AskTangentPointInterval", &R::AskTangentPointInterval, &R::SetTangentPointInterval),
        RealField("AskPeriodicAngleThreshold", &R::AskPeriodicAngleThreshold, &R::SetPeriodicAngleThreshold),
        IntegerField("AskToleranceScheme", &R::AskToleranceScheme, &R::SetToleranceScheme),
        FourField("AskAbsoluteRecognitionTolerances", &R::AskAbsoluteRecognitionTolerances,
                  &R::SetAbsoluteRecognitionTolerances),
        FourField("AskRelativeRecognitionTolerances", &R::AskRelativeRecognitionTolerances,
                  &R::SetRelativeRecognitionTolerances),
        PairField("AskCloseStrokeTolerances", &R::AskCloseStrokeTolerances, &R::SetCloseStrokeTolerances),
        RealField("AskMinimumRecognitionTolerance", &R::AskMinimumRecognitionTolerance,
                  &R::SetMinimumRecognitionTolerance),
        SwitchField("AskSnapping", &R::AskSnapping, &R::SetSnapping),
        RealField("AskSnapAngleCreate", &R::AskSnapAngleCreate, &R::SetSnapAngleCreate),
        RealField("AskSnapDistanceCreate", &R::AskSnapDistanceCreate, &R::SetSnapDistanceCreate),
        RealField("AskSnapAngleEdit", &R::AskSnapAngleEdit, &R::SetSnapAngleEdit),
        RealField("AskSnapDistanceEdit", &R::AskSnapDistanceEdit, &R::SetSnapDistanceEdit),
        IntegerField("AskSnapCandidateCount", &R::AskSnapCandidateCount, &R::SetSnapCandidateCount),
        SwitchField("GetCurveTidy", &R::GetCurveTidy, &R::SetCurveTidy),
        SwitchField("GetReduceInkCurveDeviation", &R::GetReduceInkCurveDeviation,
                    &R::SetReduceInkCurveDeviation),
        SwitchField("GetChangeCurveType", &R::GetChangeCurveType, &R::SetChangeCurveType),
        RealField("AskDragScaleThreshold", &R::AskDragScaleThreshold, &R::SetDragScaleThreshold),
        RealField("AskDragSnapMaxSpeed", &R::AskDragSnapMaxSpeed, &R::SetDragSnapMaxSpeed),
        RealField("AskDragShakeMinSpeed", &R::AskDragShakeMinSpeed, &R::SetDragShakeMinSpeed),
        RealField("AskDragShakeTime", &R::AskDragShakeTime, &R::SetDragShakeTime),
        SwitchField("AskOversketch", &R::AskOversketch, &R::SetOversketch),
        PairField("AskOverSketchTolerances", &R::AskOverSketchTolerances, &R::SetOverSketchTolerances),
        SwitchField("GetThinWallRecognition", &R::GetThinWallRecognition, &R::SetThinWallRecognition),
        SwitchField("GetRegularPolygonRecognition", &R::GetRegularPolygonRecognition,
                    &R::SetRegularPolygonRecognition),
        SwitchField("GetDoScribble", &R::GetDoScribble, &R::SetDoScribble),
        IntegerField("GetMinNumCusps", &R::GetMinNumCusps, &R::SetMinNumCusps),
        RealField("GetReflectionAngle", &R::GetReflectionAngle, &R::SetReflectionAngle),
        RealField("GetScribbleTrimTolerance", &R::GetScribbleTrimTolerance, &R::SetScribbleTrimTolerance),
        SwitchField("GetScribbleOverCurve", &R::GetScribbleOverCurve, &R::SetScribbleOverCurve),
        RealField("GetScribbleMinRotationAngle", &R::GetScribbleMinRotationAngle,
                  &R::SetScribbleMinRotationAngle),
        RealField("GetCurrentDisplayFontHeight", &R::GetCurrentDisplayFontHeight,
                  &R::SetCurrentDisplayFontHeight),
    };
}

const std::vector<Field>& Fields() {
    static const std::vector<Field> fields = MakeFields();
    return fields;
}

/// Any number, infinite and not-a-number included: the setters decide what they take.
std::optional<double> ParseValue(std::string_view text, Field::Kind kind) {
    if (kind == Field::Switch) {
        const bool isTrue = text == "true" || text == "1" || text == "on" || text == "yes";
        const bool isFalse = text == "false" || text == "0" || text == "off" || text == "no";
        return isTrue || isFalse ? std::optional<double>(isTrue ? 1.0 : 0.0) : std::nullopt;
    }
    if (kind == Field::Integer) {
        int value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        return error == std::errc() && end == text.data() + text.size() ? std::optional<double>(value)
                                                                        : std::nullopt;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional<double>(value)
                                                                    : std::nullopt;
}

std::vector<double> ParseValues(const Field& field, std::string_view text) {
    std::vector<double> values;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        const std::optional<double> value = ParseValue(text.substr(start, end - start), field.kind);
        if (!value) {
            const char* const kinds[] = {"a number", "an integer", "true or false"};
            throw PreferenceError(field.name + ": \"" + std::string(text.substr(start, end - start)) +
                                  "\" is not " + kinds[field.kind]);
        }
        values.push_back(*value);
        start = end + 1;
    }
    if (values.size() != field.count) {
        throw PreferenceError(field.name + " takes " + std::to_string(field.count) + " value" +
                              (field.count == 1 ? "" : "s separated by commas") + ", not " +
                              std::to_string(values.size()));
    }
    return values;
}

} // namespace

void SetPreference(SketchRecognizerPreferences& preferences, const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos) {
        throw PreferenceError("\"" + assignment + "\" is not of the form NAME=VALUE");
    }
    const std::string name = assignment.substr(0, equals);
    for (const Field& field : Fields()) {
        if (name != field.name && name != field.name.substr(3)) {
            continue;
        }
        const std::vector<double> values =
            ParseValues(field, std::string_view(assignment).substr(equals + 1));
        try {
            field.set(preferences, values.data());
        } catch (char* message) {
            throw PreferenceError(message);
        }
        return;
    }
    throw PreferenceError("unknown preference \"" + name + "\"");
}

std::vector<std::string> ListPreferences() {
    const SketchRecognizerPreferences defaults;
    std::vector<std::string> lines;
    for (const Field& field : Fields()) {
        std::string line = field.name + "=";
        const std::vector<double> values = field.ask(defaults);
        for (std::size_t i = 0; i < values.size(); ++i) {
            line += i == 0 ? "" : ",";
            if (field.kind == Field::Switch) {
                line += values[i] != 0.0 ? "true" : "false";
            } else if (field.kind == Field::Integer) {
                line += std::to_string(static_cast<int>(values[i]));
            } else {
                std::array<char, 32> text{};
                line.append(text.data(),
                            std::to_chars(text.data(), text.data() + text.size(), values[i]).ptr);
            }
        }
        lines.push_back(line);
    }
    return lines;
}

} // namespace Tessera::Tool
