// InkAccuracy - how often hand-drawn ink comes back as the one right answer, per class of shapes: by the
// rules alone and by interpretation.
//
//   InkAccuracy [--answers] [--misses] [--invariance] FOLDER
//
// Reads every NDJSON file of the folder: one stroke a line, {"class": "...", "id": "...", "points": [[x, y]
// or [x, y, t_ms], ...]}. The rules get the stroke scaled so that its box has a diagonal of 45, at which
// their tolerances fit best, and its closed round shapes closed; interpretation gets it as it stands.
//
// "tuned" and "kept" are the rates over two halves of the strokes, by the parity of their identifiers' sums:
// look at the failures of the first half only, and the second one tells what the change is worth.
// --answers   what came back, most frequent first
// --misses    identifier and answer of each wrong stroke of the tuned half
// --invariance  the share of strokes whose curves are the same, and whose shape has the same name as well,
// when
//               turned, mirrored, reversed, moved and scaled
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

// One letter per curve: L line, A arc, E elliptic arc, S spline, O circle, Q ellipse; + for a closed chain.
struct Expected {
    const char* answer;
    const char* also; ///< also right, or null
};
const std::map<std::string, Expected> kExpected = {
    {"rectangle", {"LLLL+", nullptr}},
    {"square", {"LLLL+", nullptr}},
    {"diamond", {"LLLL+", nullptr}},
    {"triangle", {"LLL+", nullptr}},
    {"caret", {"LL", nullptr}},
    {"v", {"LL", nullptr}},
    {"left_sq_bracket", {"LLL", nullptr}},
    {"circle", {"O", nullptr}},
    {"oval", {"Q", nullptr}},
    {"line", {"L", nullptr}},
};
// Not every circle of people who draw gestures is round.
constexpr const char* kGestures = "unistroke16";

struct Drawing {
    std::string kind;
    std::string id;
    InkStroke ink;
};

struct Row {
    int strokes = 0;
    int rules = 0;
    int right = 0;
    int half[2] = {0, 0};
    int rightOfHalf[2] = {0, 0};
    std::map<std::string, int> answers;
};
using Table = std::map<std::string, Row>;

struct Options {
    std::string folder;
    bool answers = false;
    bool misses = false;
    bool invariance = false;
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

std::string AnswerOf(const InkReading& reading) {
    if (reading.shape == InkShape::Scribble)
        return "scribble";
    std::string answer;
    for (const InterpretedCurve& made : reading.curves)
        answer += Letter(*made.curve);
    if (reading.isClosed && reading.curves.size() > 1)
        answer += '+';
    return answer;
}

std::string Interpret(const InkStroke& ink) {
    return AnswerOf(InterpretInk(ink, SketchRecognizerPreferences()));
}

// Length per millisecond over the neighbours of sample i; 0 without times.
double SpeedAt(const InkStroke& ink, std::size_t i) {
    const InkSample& a = ink.samples[i > 0 ? i - 1 : i];
    const InkSample& b = ink.samples[i];
    const InkSample& c = ink.samples[i + 1 < ink.samples.size() ? i + 1 : i];
    const double time = c.t - a.t;
    return time > 0.0 ? (std::hypot(b.x - a.x, b.y - a.y) + std::hypot(c.x - b.x, c.y - b.y)) / time : 0.0;
}

double DiagonalOf(const InkStroke& ink) {
    const auto [left, right] = std::minmax_element(ink.samples.begin(), ink.samples.end(),
                                                   [](auto& a, auto& b) { return a.x < b.x; });
    const auto [low, high] = std::minmax_element(ink.samples.begin(), ink.samples.end(),
                                                 [](auto& a, auto& b) { return a.y < b.y; });
    return std::hypot(right->x - left->x, high->y - low->y);
}

// Pieces of a poly-line or polygon count as joined: the rules know no joints.
std::string ApplyRules(const InkStroke& ink) {
    constexpr double kWorkingDiagonal = 45.0;
    const double diagonal = DiagonalOf(ink);
    if (!(diagonal > 0.0))
        return "";
    const double scale = kWorkingDiagonal / diagonal;
    Stroke stroke;
    for (std::size_t i = 0; i < ink.samples.size(); ++i)
        stroke.AddPoint({scale * ink.samples[i].x, scale * ink.samples[i].y, scale * SpeedAt(ink, i)});
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

bool IsRight(const Drawing& drawing, const std::string& answer, bool joints, bool roundsAlike) {
    std::string expected = kExpected.at(drawing.kind).answer;
    if (!joints && expected.back() == '+')
        expected.pop_back();
    if (roundsAlike && expected == "O" && answer == "Q")
        return true;
    return answer == expected;
}

int HalfOf(const std::string& id) {
    int sum = 0;
    for (const char c : id)
        sum += static_cast<unsigned char>(c);
    return sum % 2;
}

std::vector<Drawing> ReadDrawings(const std::filesystem::path& file) {
    std::vector<Drawing> drawings;
    std::ifstream in(file);
    for (std::string text; std::getline(in, text);) {
        const nlohmann::json line = nlohmann::json::parse(text);
        Drawing drawing{line.at("class"), line.value("id", ""), {}};
        for (const auto& p : line.at("points")) {
            drawing.ink.samples.push_back({p.at(0), p.at(1), p.size() > 2 ? p.at(2).get<double>() : 0.0});
            drawing.ink.hasTimes = p.size() > 2;
        }
        if (!drawing.ink.samples.empty())
            drawings.push_back(std::move(drawing));
    }
    return drawings;
}

void PrintAnswers(const Row& row) {
    std::vector<std::pair<int, std::string>> byCount;
    for (const auto& [answer, count] : row.answers)
        byCount.emplace_back(count, answer);
    std::sort(byCount.rbegin(), byCount.rend());
    byCount.resize(std::min<std::size_t>(byCount.size(), 10));
    std::printf("  ");
    for (const auto& [count, answer] : byCount)
        std::printf(" %s:%d", answer.empty() ? "-" : answer.c_str(), count);
}

double Percent(int part, int whole) {
    return whole > 0 ? 100.0 * part / whole : 0.0;
}

void PrintRow(const std::string& kind, const Row& row, bool expected, bool answers) {
    std::printf("  %-18s %7d", kind.c_str(), row.strokes);
    if (expected)
        std::printf(" %6.1f%% %6.1f%% %6.1f%% %6.1f%%", Percent(row.rules, row.strokes),
                    Percent(row.right, row.strokes), Percent(row.rightOfHalf[0], row.half[0]),
                    Percent(row.rightOfHalf[1], row.half[1]));
    else
        std::printf("%32s", "");
    if (answers)
        PrintAnswers(row);
    std::printf("\n");
}

void PrintTable(const Table& table, bool answers) {
    std::printf("  %-18s %7s %7s %7s %7s %7s%s\n", "class", "strokes", "rules", "right", "tuned", "kept",
                answers ? "   answers" : "");
    Row all;
    for (const auto& [kind, row] : table) {
        const bool expected = kExpected.count(kind) > 0;
        if (expected || answers)
            PrintRow(kind, row, expected, answers);
        if (!expected)
            continue;
        all.strokes += row.strokes;
        all.rules += row.rules;
        all.right += row.right;
        for (int h = 0; h < 2; ++h) {
            all.half[h] += row.half[h];
            all.rightOfHalf[h] += row.rightOfHalf[h];
        }
    }
    PrintRow("all", all, true, false);
}

void CountStroke(const Drawing& drawing, const Options& options, bool roundsAlike, Table& table) {
    const std::string answer = Interpret(drawing.ink);
    Row& row = table[drawing.kind];
    ++row.strokes;
    ++row.answers[answer];
    if (kExpected.count(drawing.kind) == 0)
        return;
    const int half = HalfOf(drawing.id);
    const bool right = IsRight(drawing, answer, true, roundsAlike);
    ++row.half[half];
    row.rightOfHalf[half] += right ? 1 : 0;
    row.right += right ? 1 : 0;
    row.rules += IsRight(drawing, ApplyRules(drawing.ink), false, roundsAlike) ? 1 : 0;
    if (options.misses && half == 0 && !right)
        std::printf("  %s\t%s\t%s\n", drawing.kind.c_str(), drawing.id.c_str(), answer.c_str());
}

double MedianMicroseconds(const std::vector<Drawing>& drawings,
                          const std::function<void(const InkStroke&)>& read) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> times;
    for (const Drawing& drawing : drawings) {
        const auto start = Clock::now();
        read(drawing.ink);
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
}

struct Change {
    const char* name;
    double xx, xy, yx, yy, move;
    bool reversed;
};

InkStroke Changed(const InkStroke& ink, const Change& change) {
    InkStroke out = ink;
    for (InkSample& s : out.samples)
        s = {change.xx * s.x + change.xy * s.y + change.move, change.yx * s.x + change.yy * s.y + change.move,
             s.t};
    if (!change.reversed)
        return out;
    std::reverse(out.samples.begin(), out.samples.end());
    for (InkSample& s : out.samples)
        s.t = -s.t;
    return out;
}

// The curves of a stroke drawn backwards come in the other order, those of a closed one from another start.
bool IsSame(std::string answer, std::string changed, bool reversed) {
    if (!reversed)
        return answer == changed;
    const bool isClosed = answer.ends_with('+');
    if (changed.ends_with('+') != isClosed)
        return false;
    if (isClosed) {
        answer.pop_back();
        changed.pop_back();
    }
    std::reverse(changed.begin(), changed.end());
    return answer.size() == changed.size() &&
           (isClosed ? (answer + answer).find(changed) != std::string::npos : answer == changed);
}

void PrintInvariance(const std::vector<Drawing>& drawings) {
    const auto turn = [](const char* name, double degrees) {
        const double a = degrees * 0.017453292519943295;
        return Change{name, std::cos(a), -std::sin(a), std::sin(a), std::cos(a), 0.0, false};
    };
    const Change changes[] = {turn("turned by 15", 15.0),
                              turn("turned by 37", 37.0),
                              turn("turned by 90", 90.0),
                              {"mirrored", -1.0, 0.0, 0.0, 1.0, 0.0, false},
                              {"reversed", 1.0, 0.0, 0.0, 1.0, 0.0, true},
                              {"moved by 1e6", 1.0, 0.0, 0.0, 1.0, 1e6, false},
                              {"scaled by 0.01", 0.01, 0.0, 0.0, 0.01, 0.0, false},
                              {"scaled by 100", 100.0, 0.0, 0.0, 100.0, 0.0, false}};
    for (const Change& change : changes) {
        int same = 0;
        int named = 0;
        for (const Drawing& drawing : drawings) {
            const InkReading before = InterpretInk(drawing.ink, SketchRecognizerPreferences());
            const InkReading after =
                InterpretInk(Changed(drawing.ink, change), SketchRecognizerPreferences());
            const bool isSame = IsSame(AnswerOf(before), AnswerOf(after), change.reversed);
            same += isSame ? 1 : 0;
            named += isSame && before.shape == after.shape ? 1 : 0;
        }
        const int all = static_cast<int>(drawings.size());
        std::printf("  same answer %-16s %6.2f%%, and name %6.2f%%\n", change.name, Percent(same, all),
                    Percent(named, all));
    }
}

void MeasureFile(const std::filesystem::path& file, const Options& options) {
    const std::vector<Drawing> drawings = ReadDrawings(file);
    if (drawings.empty())
        return;
    std::printf("%s\n", file.filename().string().c_str());
    Table table;
    for (const Drawing& drawing : drawings)
        CountStroke(drawing, options, file.stem() == kGestures, table);
    PrintTable(table, options.answers);
    std::printf("  median per stroke: interpretation %.1f us, rules %.1f us\n",
                MedianMicroseconds(drawings, [](const InkStroke& ink) { Interpret(ink); }),
                MedianMicroseconds(drawings, [](const InkStroke& ink) { ApplyRules(ink); }));
    if (options.invariance)
        PrintInvariance(drawings);
}

} // namespace

int main(int argc, char** argv) try {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--answers")
            options.answers = true;
        else if (argument == "--misses")
            options.misses = true;
        else if (argument == "--invariance")
            options.invariance = true;
        else
            options.folder = argument;
    }
    if (options.folder.empty()) {
        std::fprintf(stderr, "usage: %s [--answers] [--misses] [--invariance] FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(options.folder))
        if (entry.path().extension() == ".ndjson")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files)
        MeasureFile(file, options);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 2;
}
