// Ink as the tool holds it between reading and writing: drawings of strokes of samples, in the file's units.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Tessera::Tool {

struct Position {
    double x = 0.0;
    double y = 0.0;
};

struct Sample {
    double x = 0.0;
    double y = 0.0;
    double timeMs = 0.0; ///< 0 in a stroke without times
};

struct InkStroke {
    std::vector<Sample> samples;
    bool isTimed = false;
    std::string problem; ///< why the stroke cannot be used; empty when it can
};

struct Drawing {       // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
    nlohmann::json id; ///< as the file gave it (string or number), else made from the file's name
    std::vector<InkStroke> strokes;
    std::string place; ///< where in the file the drawing stands ("line 7: "), for messages; empty for a whole
                       ///< file
    std::string problem; ///< why nothing of the drawing can be used; empty when some stroke can
};

struct InkFile {
    std::vector<Drawing> drawings;
    bool isLines = false; ///< one drawing a line in, one line a drawing out
};

/// A file that cannot be used; the text tells the place ("line 3: ...") but not the file's name.
class InkError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Tessera::Tool
