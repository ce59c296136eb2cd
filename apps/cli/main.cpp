// tessera - the command-line tool.

#include <exception>
#include <iostream>

#include "apps/cli/CommandLine.h"
#include "apps/cli/RecognizeCommand.h"
#include "apps/cli/convert/ConvertCommand.h"

int main(int argc, char** argv) {
    using namespace Tessera::Tool;
    std::ios::sync_with_stdio(false);
    try {
        int status = kFine;
        const std::optional<CommandLine> line = ParseCommandLine(argc, argv, std::cout, std::cerr, status);
        if (!line) {
            return status;
        }
        const auto run = line->command == Command::Convert ? RunConvert : RunRecognize;
        return run(*line, std::cin, std::cout, std::cerr);
    } catch (const std::exception& error) {
        std::cerr << "tessera: " << error.what() << '\n';
        return kBadFile;
    }
}
