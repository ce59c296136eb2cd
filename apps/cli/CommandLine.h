// The command line of the tool.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizeDrawing.h"
#include "apps/cli/write/DrawingWriter.h"

namespace Tessera::Tool {

enum ExitStatus { kFine = 0, kBadStroke = 1, kBadFile = 2 };

enum class Command { Recognize, Scribble, Convert };

struct CommandLine {
    Command command = Command::Recognize;
    std::vector<std::string> inputs;
    std::string output = "-"; ///< file, directory or - for standard output
    OutputFormat format = OutputFormat::Summary;
    RecognizeOptions options;
    std::optional<double> toleranceZone; ///< of `tessera convert`; nothing: the host's
    bool showsGlyphs = true;
    bool isQuiet = false;
};

/// Nothing when the tool is to end at once with `status`: help and version have been printed, or a mistake
/// has been told.
std::optional<CommandLine> ParseCommandLine(int argc, const char* const* argv, std::ostream& out,
                                            std::ostream& err, int& status);

} // namespace Tessera::Tool
