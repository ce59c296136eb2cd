// The statistics of NumericHelpers over any run of doubles, without an allocation.
#pragma once

#include <span>

namespace Tessera::Core {

/// As FindMeanAndStdDev; either pointer may be null.
bool MeanAndStdDev(std::span<const double> values, double* mean, double* stdDev);
/// As FindMeanAndStdDevWithOutlierRejection; three passes at most.
bool MeanAndStdDevWithOutlierRejection(std::span<const double> values, double* mean, double* stdDev);

} // namespace Tessera::Core
