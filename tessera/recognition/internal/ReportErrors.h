// ReportErrors - the border that no error of a recognition crosses.
#pragma once

#include <iostream>

namespace Tessera::Geometry {

/// Runs a step; a thrown message text goes to standard error, anything else as "unknown error".
template <class Step>
void ReportErrors(Step step) {
    try {
        step();
    } catch (const char* message) {
        std::cerr << message << std::endl;
    } catch (...) {
        std::cerr << "unknown error" << std::endl;
    }
}

} // namespace Tessera::Geometry
