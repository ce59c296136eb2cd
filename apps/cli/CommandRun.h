// The run of a command over its inputs, which is the same for all commands: files are read and drawings
// handed on, outputs opened and closed, problems told.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "apps/cli/CommandLine.h"
#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

/// A stroke that could not be used.
struct StrokeProblem {
    int stroke = 0;
    std::string text;
};

/// Those of the strokes of a drawing, recognised or converted.
template <class Strokes>
std::vector<StrokeProblem> ProblemsOf(const Strokes& strokes) {
    std::vector<StrokeProblem> problems;
    for (const auto& stroke : strokes) {
        if (!stroke.problem.empty()) {
            problems.push_back({stroke.index, stroke.problem});
        }
    }
    return problems;
}

/// One output of a command: given its drawings in order, then finished.
class CommandOutput {
public:
    CommandOutput() = default;
    CommandOutput(const CommandOutput&) = delete;
    CommandOutput& operator=(const CommandOutput&) = delete;
    virtual ~CommandOutput() = default;

    /// Does the command's work on the drawing and writes what came of it.
    virtual std::vector<StrokeProblem> Add(Drawing drawing) = 0;
    virtual void Finish() = 0;
};
using OutputMaker = std::function<std::unique_ptr<CommandOutput>(std::ostream&)>;

/// @return the exit status: the worst of what happened to any file.
int RunCommand(const CommandLine& line, const OutputMaker& makeOutput, std::istream& in, std::ostream& out,
               std::ostream& err);

} // namespace Tessera::Tool
