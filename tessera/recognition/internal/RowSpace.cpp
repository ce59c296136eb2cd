#include "tessera/recognition/internal/RowSpace.h"

#include <algorithm>
#include <cmath>

// Everything a row meets in the factor lies on the way from the rows that it shares a column with to the root
// of their tree. Products are not thinned out where they happen to vanish: that keeps the trees and the
// components that share columns the same.

namespace Tessera::Geometry {

void RowSpace::Reset(int columns) {
    for (int place = 0; place < count_; ++place) {
        for (const SparseEntry& e : rows_[place].entries)
            columns_[e.at].clear();
        Clear(rows_[place]);
    }
    count_ = 0;
    if (columns_.size() < static_cast<std::size_t>(columns))
        columns_.resize(static_cast<std::size_t>(columns));
}

void RowSpace::Extend(int places) {
    count_ += places;
    const auto size = static_cast<std::size_t>(count_);
    if (rows_.size() < size) {
        rows_.resize(size);
        work_.resize(size, 0.0);
        isReached_.resize(size, 0);
    }
}

/// Adds the row and its ancestors to those reached.
void RowSpace::Reach(int place) {
    for (; place >= 0 && isReached_[place] == 0; place = rows_[place].parent) {
        isReached_[place] = 1;
        reached_.push_back(place);
    }
}

/// L work = work on the rows reached, which are put in order.
void RowSpace::SolveForward() {
    std::sort(reached_.begin(), reached_.end());
    for (int place : reached_) {
        const Row& row = rows_[place];
        const double z = work_[place] / row.diagonal;
        work_[place] = z;
        workDone_ += static_cast<double>(row.later.size());
        for (const SparseEntry& e : row.later)
            work_[e.at] -= e.value * z;
    }
}

double RowSpace::Fill(int place, std::span<const SparseEntry> entries, double leastSine) {
    reached_.clear();
    double restSq = 0.0;
    for (const SparseEntry& e : entries) {
        restSq += e.value * e.value;
        for (const SparseEntry& other : columns_[e.at]) {
            Reach(other.at);
            work_[other.at] += e.value * other.value;
        }
    }
    SolveForward();
    for (int earlier : reached_)
        restSq -= work_[earlier] * work_[earlier];
    const double sine = std::sqrt(std::max(restSq, 0.0));
    const bool isFilled = sine > leastSine;
    Row& row = rows_[place];
    for (int earlier : reached_) {
        Row& met = rows_[earlier];
        if (isFilled) {
            met.later.push_back({place, work_[earlier]});
            if (met.parent < 0) {
                met.parent = place;
                met.nextChild = row.firstChild;
                row.firstChild = earlier;
            }
        }
        work_[earlier] = 0.0;
        isReached_[earlier] = 0;
    }
    if (isFilled) {
        row.entries.assign(entries.begin(), entries.end());
        row.earlier = reached_;
        row.diagonal = sine;
        for (const SparseEntry& e : entries)
            columns_[e.at].push_back({place, e.value});
    }
    return sine;
}

void RowSpace::Clear(Row& row) {
    row.entries.clear();
    row.earlier.clear();
    row.later.clear();
    row.diagonal = 1.0;
    row.parent = row.firstChild = row.nextChild = -1;
}

void RowSpace::Empty(int place) {
    Row& row = rows_[place];
    for (const SparseEntry& e : row.entries)
        columns_[e.at].pop_back();
    for (int earlier : row.earlier) {
        Row& met = rows_[earlier];
        met.later.pop_back();
        if (met.parent == place)
            met.parent = met.nextChild = -1;
    }
    Clear(row);
}

void RowSpace::EmptyComponents(std::span<const int> places) {
    for (int place : places) {
        for (const SparseEntry& e : rows_[place].entries)
            columns_[e.at].clear();
        Clear(rows_[place]);
    }
}

void RowSpace::Truncate(int rowCount) {
    while (count_ > rowCount)
        Empty(--count_);
}

/// Begins the tree of a row unless it has been begun.
void RowSpace::PushRoot(int place) {
    while (rows_[place].parent >= 0)
        place = rows_[place].parent;
    if (isReached_[place] == 0) {
        isReached_[place] = 1;
        tree_.push_back(place);
    }
}

/// Adds all descendants of the roots.
void RowSpace::PushTree() {
    for (int place : tree_)
        isReached_[place] = 0;
    for (std::size_t i = 0; i < tree_.size(); ++i)
        for (int child = rows_[tree_[i]].firstChild; child >= 0; child = rows_[child].nextChild)
            tree_.push_back(child);
}

void RowSpace::CollectConnected(std::span<const int> columns, std::vector<int>& places) {
    tree_.clear();
    for (int column : columns)
        if (!columns_[column].empty())
            PushRoot(columns_[column].front().at);
    PushTree();
    places = tree_;
    std::sort(places.begin(), places.end());
}

/// L^T work = work on the components of the rows reached, whose rows go to tree_. What a row below takes over
/// comes from rows that the one above it knows, too: where all of these have next to nothing, the descent
/// ends.
void RowSpace::SolveBackward(double leastWeight) {
    tree_.clear();
    for (int place : reached_)
        if (rows_[place].parent < 0)
            tree_.push_back(place);
    for (std::size_t i = 0; i < tree_.size(); ++i) {
        const Row& row = rows_[tree_[i]];
        double rest = work_[tree_[i]];
        double largest = 0.0;
        workDone_ += static_cast<double>(row.later.size());
        for (const SparseEntry& e : row.later) {
            rest -= e.value * work_[e.at];
            largest = std::max(largest, std::fabs(work_[e.at]));
        }
        rest /= row.diagonal;
        work_[tree_[i]] = rest;
        if (isReached_[tree_[i]] != 0 || std::max(largest, std::fabs(rest)) > leastWeight)
            for (int child = row.firstChild; child >= 0; child = rows_[child].nextChild)
                tree_.push_back(child);
    }
    for (int place : reached_)
        isReached_[place] = 0;
}

void RowSpace::ShortestStep(std::span<const int> places, std::span<const double> residuals, double leastShare,
                            std::vector<double>& step, std::vector<int>& touched) {
    reached_.clear();
    double largest = 0.0;
    for (int place : places)
        if (IsFilled(place)) {
            Reach(place);
            work_[place] = -residuals[place];
            largest = std::max(largest, std::fabs(residuals[place]));
        }
    SolveForward();
    SolveBackward(leastShare * largest);
    isTouched_.resize(columns_.size(), 0);
    const std::size_t touchedBefore = touched.size();
    for (int place : tree_) {
        for (const SparseEntry& e : rows_[place].entries) {
            step[e.at] += work_[place] * e.value;
            if (isTouched_[e.at] == 0) {
                isTouched_[e.at] = 1;
                touched.push_back(e.at);
            }
        }
        work_[place] = 0.0;
    }
    for (std::size_t i = touchedBefore; i < touched.size(); ++i)
        isTouched_[touched[i]] = 0;
}

void RowSpace::Combine(std::span<const int> columns, std::span<const double> vector, double leastShare,
                       std::vector<SparseEntry>& combination) {
    reached_.clear();
    for (int column : columns)
        for (const SparseEntry& e : columns_[column]) {
            Reach(e.at);
            work_[e.at] += e.value * vector[column];
        }
    SolveForward();
    SolveBackward(leastShare);
    combination.clear();
    for (int place : tree_) {
        combination.push_back({place, work_[place]});
        work_[place] = 0.0;
    }
}

void RowSpace::RemoveSpan(std::span<const int> places, std::vector<double>& vector) {
    std::vector<double> along(static_cast<std::size_t>(count_), 0.0);
    for (int place : places)
        for (const SparseEntry& e : rows_[place].entries)
            along[place] += e.value * vector[e.at];
    std::vector<int> touched;
    ShortestStep(places, along, 0.0, vector, touched);
}

} // namespace Tessera::Geometry
