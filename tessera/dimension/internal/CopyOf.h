// CopyOf - copies of owned records that may be missing.
#pragma once

#include <memory>

namespace Tessera::Dimension {

template <class T>
std::unique_ptr<T> CopyOf(const std::unique_ptr<T>& record) {
    std::unique_ptr<T> copy;
    if (record)
        copy.reset(new T(*record));
    return copy;
}

} // namespace Tessera::Dimension
