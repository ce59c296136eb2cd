// DisjointSets - which of n things belong together. Union by size with path halving: R. E. Tarjan, J. ACM 22
// (1975) 215-225.
#pragma once

#include <numeric>
#include <utility>
#include <vector>

namespace Tessera::Geometry {

class DisjointSets {
public:
    explicit DisjointSets(int count)
        : parent_(static_cast<std::size_t>(count)), size_(static_cast<std::size_t>(count), 1) {
        std::iota(parent_.begin(), parent_.end(), 0);
        next_ = parent_;
    }

    /// A member that stands for the set.
    int RootOf(int i) {
        while (parent_[i] != i)
            i = parent_[i] = parent_[parent_[i]];
        return i;
    }
    int SizeOf(int i) { return size_[RootOf(i)]; }
    void Unite(int a, int b) {
        a = RootOf(a);
        b = RootOf(b);
        if (a == b)
            return;
        if (size_[a] > size_[b])
            std::swap(a, b);
        parent_[a] = b;
        size_[b] += size_[a];
        std::swap(next_[a], next_[b]);
    }
    /// Calls visit for each member of i's set, i first.
    template <class Visit>
    void ForMembers(int i, Visit visit) const {
        int member = i;
        do {
            visit(member);
            member = next_[member];
        } while (member != i);
    }

private:
    std::vector<int> parent_;
    std::vector<int> size_;
    std::vector<int> next_; ///< the members of a set in a ring
};

} // namespace Tessera::Geometry
