// RowSpace - an orthonormal basis of sparse rows that grows row by row (Gram-Schmidt), with the factor that
// solves for the shortest step.
//
// Rows J of unit length are kept as J = R Q: R lower triangular, Q orthonormal, both sparse. A new row costs
// what its overlap with earlier ones costs: only rows that share a column with it take part. Orthogonalised
// twice, which keeps Q orthogonal to working precision. Source: L. Giraud, J. Langou, M. Rozloznik, J. van
// den Eshof, Numer. Math. 101 (2005) 87-100.
#pragma once

#include <span>
#include <vector>

namespace Tessera::Geometry {

class RowSpace {
public:
    explicit RowSpace(int columns);

    int RowCount() const { return static_cast<int>(rows_.size()); }
    /// Appends a row of unit length. Returns the sine of its angle to the span of the rows before it and
    /// appends only when that exceeds `leastSine`.
    double Append(std::span<const int> index, std::span<const double> value, double leastSine);
    /// Drops the last rows.
    void Truncate(int rowCount);

    /// The shortest step with J step = -residuals (one per row); the rows before `firstRow` have residual 0.
    /// Adds it to `step` (one place per column) and appends the columns that it touches, some of them twice.
    void ShortestStep(std::span<const double> residuals, int firstRow, std::vector<double>& step,
                      std::vector<int>& touched) const;
    /// Takes from `vector` (one place per column) its part in the row space.
    void RemoveRowSpace(std::vector<double>& vector) const;

private:
    struct SparseVector {
        std::vector<int> index;
        std::vector<double> value;
    };
    struct Row {
        SparseVector q;
        SparseVector r; ///< the row's components along earlier rows
        double diagonal = 0.0;
    };

    void CollectOverlap(std::span<const int> index);
    void Subtract(int row);
    double Dot(const SparseVector& q) const;
    void StoreRemainder(double norm);

    std::vector<Row> rows_;
    std::vector<std::vector<int>> rowsOfColumn_;
    // Scratch for Append.
    std::vector<double> work_;
    std::vector<int> workColumns_;
    std::vector<char> columnUsed_;
    std::vector<int> overlap_;
    std::vector<double> coefficient_; ///< per row
    std::vector<char> rowUsed_;
};

} // namespace Tessera::Geometry
