// RowSpace - the span of sparse rows that come and go, and the shortest step across them.
//
// Rows J of unit length are kept with the sparse Cholesky factor of their products, J J^T = L L^T, which
// grows row by row. A new row costs what it shares with earlier ones: only rows of its own connected
// component take part, found along the elimination tree. Source: T. A. Davis, Direct Methods for Sparse
// Linear Systems (SIAM, 2006), section 4.8.
//
// Every row has a number, its place; a place without a row is empty. Within a component rows are filled in
// ascending order of their places.
#pragma once

#include <span>
#include <vector>

namespace Tessera::Geometry {

struct SparseEntry {
    int at;
    double value;
};

class RowSpace {
public:
    /// Begins anew without rows; memory is kept.
    void Reset(int columns);

    int RowCount() const { return count_; }
    /// Products taken in solutions since construction: the measure of the work done.
    double Work() const { return workDone_; }
    bool IsFilled(int place) const { return !rows_[place].entries.empty(); }
    /// Adds empty places at the end.
    void Extend(int places);
    /// Drops the last places with their rows.
    void Truncate(int rowCount);

    /// Puts a row of unit length into an empty place if the sine of its angle to the span of the rows before
    /// it exceeds `leastSine`. Returns that sine.
    double Fill(int place, std::span<const SparseEntry> row, double leastSine);
    /// Empties a place that was filled last in its component.
    void Empty(int place);
    /// Empties all places of components.
    void EmptyComponents(std::span<const int> places);
    /// The places of the components that have a row in one of the columns, ascending.
    void CollectConnected(std::span<const int> columns, std::vector<int>& places);

    /// The shortest step with J step = -residuals, one for each place; only those of the places given are
    /// read, the others are 0. Adds it to `step`, and its columns, once each, to `touched`. What is so far
    /// off that it would take part by less than `leastShare` of the largest residual stays out.
    void ShortestStep(std::span<const int> places, std::span<const double> residuals, double leastShare,
                      std::vector<double>& step, std::vector<int>& touched);
    /// The combination of rows that comes nearest to the vector, which is given by those of its columns that
    /// are not zero: fills `combination`, but for what is far off and would take part by less than
    /// `leastShare`.
    void Combine(std::span<const int> columns, std::span<const double> vector, double leastShare,
                 std::vector<SparseEntry>& combination);
    /// Takes from the vector its part in the span of components.
    void RemoveSpan(std::span<const int> places, std::vector<double>& vector);

private:
    struct Row {
        std::vector<SparseEntry> entries; ///< by column; none: the place is empty
        std::vector<int> earlier;         ///< rows that it meets in the factor, ascending
        std::vector<SparseEntry> later;   ///< its column of the factor, below the diagonal
        double diagonal = 1.0;
        // The elimination tree.
        int parent = -1;
        int firstChild = -1;
        int nextChild = -1; ///< of the same parent
    };

    void Reach(int place);
    void Clear(Row& row);
    void SolveForward();
    void SolveBackward(double leastWeight);
    void PushRoot(int place);
    void PushTree();

    int count_ = 0;
    double workDone_ = 0.0;
    std::vector<Row> rows_;                         ///< those from count_ on wait for reuse
    std::vector<std::vector<SparseEntry>> columns_; ///< the rows of each column, ascending
    // Scratch.
    std::vector<double> work_; ///< per row; zero between calls
    std::vector<char> isReached_;
    std::vector<int> reached_;
    std::vector<int> tree_; ///< rows of components, parents before their children
    std::vector<char> isTouched_;
};

} // namespace Tessera::Geometry
