// InkRates - how often hand-drawn ink comes back as the one right answer, per class of shapes.
//
//   InkRates [--speeds] [--answers] FOLDER [DIAGONAL...]
//   InkRates --scribbles FOLDER
//
// Reads every NDJSON file of the folder: one stroke a line, {"class": "...", "points": [[x, y] or
// [x, y, t_ms], ...]}. Each stroke is recognised and closed as it stands ("x1") and scaled so that its
// box has the given diagonal (45 without one). --speeds takes pen speeds from the time stamps;
// --answers also lists what came back instead. --scribbles asks instead which strokes are scribbles, by the
// bare test of the ink as it stands and by the question that is asked of real ink; classes whose name begins
// with "scribble" should be, the others should not.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

// Answers are written one letter per curve: L line, A arc, E elliptic arc, S spline, O circle, Q ellipse.
struct Expected {
    const char* answer;
    const char* lenient; ///< also good enough, or null
};
const std::map<std::string, Expected> kExpected = {
    {"rectangle", {"LLLL", nullptr}},
    {"square", {"LLLL", nullptr}},
    {"diamond", {"LLLL", nullptr}},
    {"triangle", {"LLL", nullptr}},
    {"caret", {"LL", nullptr}},
    {"v", {"LL", nullptr}},
    {"left_sq_bracket", {"LLL", nullptr}},
    {"circle", {"O", "Q"}},
    {"oval", {"Q", "O"}},
    {"line", {"L", nullptr}},
};

struct Sample {
    double x, y, t;
};
using Drawing = std::vector<Sample>;

struct Rates {
    int strokes = 0;
    int right = 0;
    int lenient = 0;
    std::map<std::string, int> answers;
};

char Letter(const Curve& curve) {
    switch (curve.GetType()) {
    case CurveType_Line:
        return 'L';
    case CurveType_Arc:
        return curve.IsClosed() ? 'O' : 'A';
    case CurveType_Ellipse:
        return curve.IsClosed() ? 'Q' : 'E';
    default:
        return 'S';
    }
}

// Length per millisecond over the neighbours of sample i; 0 without times.
double SpeedAt(const Drawing& ink, std::size_t i) {
    const Sample& a = ink[i > 0 ? i - 1 : i];
    const Sample& b = ink[i];
    const Sample& c = ink[i + 1 < ink.size() ? i + 1 : i];
    const double time = c.t - a.t;
    return time > 0.0 ? (std::hypot(b.x - a.x, b.y - a.y) + std::hypot(c.x - b.x, c.y - b.y)) / time : 0.0;
}

std::string AnswerFor(const Drawing& ink, double scale, bool withSpeeds) {
    Stroke stroke;
    for (std::size_t i = 0; i < ink.size(); ++i)
        stroke.AddPoint({scale * ink[i].x, scale * ink[i].y, withSpeeds ? scale * SpeedAt(ink, i) : 0.0});
    SketchRecognizer recognizer;
    recognizer.Recognize(stroke, true, CurveType_Line);
    CloseRoundStroke(recognizer);
    std::string answer;
    for (const RecognizedGeometry* result : recognizer.GetResults()) {
        answer += Letter(result->GetResult());
        delete &result->GetResult();
        delete result;
    }
    return answer;
}

double DiagonalOf(const Drawing& ink) {
    const auto [left, right] =
        std::minmax_element(ink.begin(), ink.end(), [](auto& a, auto& b) { return a.x < b.x; });
    const auto [low, high] =
        std::minmax_element(ink.begin(), ink.end(), [](auto& a, auto& b) { return a.y < b.y; });
    return std::hypot(right->x - left->x, high->y - low->y);
}

Drawing ReadDrawing(const nlohmann::json& line) {
    Drawing ink;
    for (const auto& p : line.at("points"))
        ink.push_back({p.at(0), p.at(1), p.size() > 2 ? p.at(2).get<double>() : 0.0});
    return ink;
}

using Table = std::map<std::string, Rates>; ///< by class

void Count(Table& table, const std::string& kind, const std::string& answer) {
    Rates& rates = table[kind];
    const auto expected = kExpected.find(kind);
    ++rates.strokes;
    ++rates.answers[answer.empty() ? "-" : answer];
    if (expected == kExpected.end())
        return;
    const bool right = answer == expected->second.answer;
    rates.right += right ? 1 : 0;
    rates.lenient +=
        right || (expected->second.lenient != nullptr && answer == expected->second.lenient) ? 1 : 0;
}

void PrintAnswers(const Rates& rates) {
    std::vector<std::pair<int, std::string>> byCount;
    for (const auto& [answer, count] : rates.answers)
        byCount.emplace_back(count, answer);
    std::sort(byCount.rbegin(), byCount.rend());
    byCount.resize(std::min<std::size_t>(byCount.size(), 8));
    std::printf("     ");
    for (const auto& [count, answer] : byCount)
        std::printf(" %s:%d", answer.c_str(), count);
    std::printf("\n");
}

void Print(const std::string& title, const Table& table, bool withAnswers) {
    Rates all;
    std::printf("%s\n  %-18s %7s %7s %8s\n", title.c_str(), "class", "strokes", "right", "lenient");
    for (const auto& [kind, rates] : table) {
        if (kExpected.count(kind) > 0) {
            std::printf("  %-18s %7d %6.1f%% %7.1f%%\n", kind.c_str(), rates.strokes,
                        100.0 * rates.right / rates.strokes, 100.0 * rates.lenient / rates.strokes);
            all.strokes += rates.strokes;
            all.right += rates.right;
            all.lenient += rates.lenient;
        }
        if (withAnswers)
            PrintAnswers(rates);
    }
    if (all.strokes > 0)
        std::printf("  %-18s %7d %6.1f%% %7.1f%%\n", "all", all.strokes, 100.0 * all.right / all.strokes,
                    100.0 * all.lenient / all.strokes);
}

struct Options {
    std::string folder;
    std::vector<double> diagonals;
    bool withSpeeds = false;
    bool withAnswers = false;
    bool asksScribbles = false;
};

void MeasureFile(const std::filesystem::path& file, const Options& options) {
    std::map<double, Table> tables; // by diagonal, 0: as it stands
    std::ifstream in(file);
    for (std::string text; std::getline(in, text);) {
        const nlohmann::json line = nlohmann::json::parse(text);
        if (line.value("strokes", 1) > 1)
            continue; // a class tells what the whole drawing shows
        const Drawing ink = ReadDrawing(line);
        const double diagonal = ink.empty() ? 0.0 : DiagonalOf(ink);
        for (const double wanted : options.diagonals)
            if (diagonal > 0.0 || wanted == 0.0)
                Count(tables[wanted], line.at("class"),
                      AnswerFor(ink, wanted > 0.0 ? wanted / diagonal : 1.0, options.withSpeeds));
    }
    for (const auto& [diagonal, table] : tables) {
        const std::string scale = diagonal > 0.0 ? "diagonal " + std::to_string(diagonal) : "x1";
        Print(file.filename().string() + ", " + scale, table, options.withAnswers);
    }
}

struct ScribbleRates {
    int strokes = 0;
    int byBareTest = 0;
    int byQuestion = 0;
};

void MeasureScribbles(const std::filesystem::path& folder) {
    std::map<std::string, ScribbleRates> table;
    SketchRecognizerPreferences preferences;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream in;
        if (entry.path().extension() == ".ndjson")
            in.open(entry.path());
        for (std::string text; std::getline(in, text);) {
            const nlohmann::json line = nlohmann::json::parse(text);
            Stroke stroke;
            std::vector<Point> ink;
            for (const Sample& sample : ReadDrawing(line)) {
                stroke.AddPoint({sample.x, sample.y, 0.0});
                ink.emplace_back(sample.x, sample.y);
            }
            ScribbleRates& rates = table[line.at("class")];
            ++rates.strokes;
            rates.byBareTest += StrokeIsScribbleShape(&stroke, &preferences, nullptr) ? 1 : 0;
            rates.byQuestion += IsScribbleInk(ink, preferences) ? 1 : 0;
        }
    }
    std::printf("taken for scribbles\n  %-18s %7s %9s %8s\n", "class", "strokes", "bare test", "question");
    for (const auto& [kind, rates] : table)
        std::printf("  %-18s %7d %9d %8d\n", kind.c_str(), rates.strokes, rates.byBareTest, rates.byQuestion);
}

} // namespace

int main(int argc, char** argv) try {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--speeds")
            options.withSpeeds = true;
        else if (argument == "--answers")
            options.withAnswers = true;
        else if (argument == "--scribbles")
            options.asksScribbles = true;
        else if (options.folder.empty())
            options.folder = argument;
        else
            options.diagonals.push_back(std::stod(argument));
    }
    if (options.folder.empty()) {
        std::fprintf(stderr, "usage: %s [--speeds] [--answers] [--scribbles] FOLDER [DIAGONAL...]\n",
                     argv[0]);
        return 2;
    }
    if (options.asksScribbles) {
        MeasureScribbles(options.folder);
        return 0;
    }
    if (options.diagonals.empty())
        options.diagonals.push_back(45.0);
    options.diagonals.push_back(0.0);
    for (const auto& entry : std::filesystem::directory_iterator(options.folder))
        if (entry.path().extension() == ".ndjson")
            MeasureFile(entry.path(), options);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 2;
}
