// `tessera convert`: read the inputs, draw them into documents of the reference host and write what these
// hold.
#pragma once

#include <iosfwd>

#include "apps/cli/CommandLine.h"

namespace Tessera::Tool {

/// @return the exit status: the worst of what happened to any file.
int RunConvert(const CommandLine& line, std::istream& in, std::ostream& out, std::ostream& err);

} // namespace Tessera::Tool
