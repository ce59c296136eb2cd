// ScribbleAccuracy - which strokes of a folder of ink are taken for scribbles, per class.
//
//   ScribbleAccuracy FOLDER
//
// Reads every NDJSON file of the folder: one stroke a line, {"class": "...", "points": [[x, y, ...], ...]}.
// The bare test is asked about the ink as it stands, the question for real ink about the same points. Classes
// whose name begins with "scribble" should be found, the others should not.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

struct Rates {
    int strokes = 0;
    int byBareTest = 0;
    int byQuestion = 0;
};

void Count(const nlohmann::json& line, std::map<std::string, Rates>& table) {
    SketchRecognizerPreferences preferences;
    Stroke stroke;
    std::vector<Point> ink;
    for (const auto& p : line.at("points")) {
        ink.emplace_back(p.at(0).get<double>(), p.at(1).get<double>());
        stroke.AddPoint({ink.back().x, ink.back().y, 0.0});
    }
    Rates& rates = table[line.at("class")];
    ++rates.strokes;
    rates.byBareTest += StrokeIsScribbleShape(&stroke, &preferences, nullptr) ? 1 : 0;
    rates.byQuestion += IsScribbleInk(ink, preferences) ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::map<std::string, Rates> table;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        if (entry.path().extension() != ".ndjson")
            continue;
        std::ifstream in(entry.path());
        for (std::string text; std::getline(in, text);)
            Count(nlohmann::json::parse(text), table);
    }
    std::printf("  %-18s %7s %9s %8s\n", "class", "strokes", "bare test", "question");
    for (const auto& [kind, rates] : table)
        std::printf("  %-18s %7d %9d %8d\n", kind.c_str(), rates.strokes, rates.byBareTest, rates.byQuestion);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 2;
}
