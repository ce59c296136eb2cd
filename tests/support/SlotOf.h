// The place of a virtual operation in its class's table, where it is part of the binary interface.
#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

namespace Tessera::Testing {

/// In the Itanium ABI a pointer to a virtual member holds 1 plus the byte offset of its slot. The destructor
/// takes the first two.
template <class Member>
std::ptrdiff_t SlotOf(Member member) {
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <class... Members>
std::vector<std::ptrdiff_t> SlotsOf(Members... members) {
    return {SlotOf(members)...};
}

} // namespace Tessera::Testing
