// `tessera recognize` and `tessera scribble`: read the inputs, recognise them and write the results.
#pragma once

#include <iosfwd>

#include "apps/cli/CommandLine.h"

namespace Tessera::Tool {

/// @return the exit status: the worst of what happened to any file.
int RunRecognize(const CommandLine& line, std::istream& in, std::ostream& out, std::ostream& err);

} // namespace Tessera::Tool
