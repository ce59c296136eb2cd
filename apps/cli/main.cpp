// tessera - the command-line tool.

#include <exception>
#include <iostream>

#include "apps/cli/CommandLine.h"
#include "apps/cli/RecognizeCommand.h"

int main(int argc, char** argv) {
    using namespace Tessera::Tool;
    std::ios::sync_with_stdio(false);
    try {
        int status = kFine;
        const std::optional<CommandLine> line = ParseCommandLine(argc, argv, std::cout, std::cerr, status);
        return line ? RunRecognize(*line, std::cin, std::cout, std::cerr) : status;
    } catch (const std::exception& error) {
        std::cerr << "tessera: " << error.what() << '\n';
        return kBadFile;
    }
}
