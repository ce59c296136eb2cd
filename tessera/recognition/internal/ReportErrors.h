// ReportErrors - the border that no error of a recognition crosses.
#pragma once

#include <iostream>
#include <new>

#include "tessera/kernel/internal/SmFault.h"

namespace Tessera::Geometry {

/// Runs a step; a thrown message text goes to standard error, anything else as "unknown error". A lack of
/// memory is counted as the kernel's own: who needs the whole answer asks the count.
template <class Step>
void ReportErrors(Step step) {
    try {
        step();
    } catch (const char* message) {
        std::cerr << message << std::endl;
    } catch (const std::bad_alloc&) {
        SM_count_refusal();
        std::cerr << "unknown error" << std::endl;
    } catch (...) {
        std::cerr << "unknown error" << std::endl;
    }
}

} // namespace Tessera::Geometry
