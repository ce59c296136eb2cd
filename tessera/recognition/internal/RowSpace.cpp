#include "tessera/recognition/internal/RowSpace.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

/// Components of a unit vector below this are rounding; dropping them keeps the basis sparse. Unit-free.
constexpr double kNegligible = 1e-14;

} // namespace

RowSpace::RowSpace(int columns)
    : rowsOfColumn_(static_cast<std::size_t>(columns)), work_(static_cast<std::size_t>(columns), 0.0),
      columnUsed_(static_cast<std::size_t>(columns), 0) {}

/// The rows that share a column with the index list, in order; the others have no component in common with
/// it.
void RowSpace::CollectOverlap(std::span<const int> index) {
    overlap_.clear();
    rowUsed_.resize(rows_.size(), 0);
    coefficient_.resize(rows_.size(), 0.0);
    for (int column : index)
        for (int row : rowsOfColumn_[column])
            if (rowUsed_[row] == 0) {
                rowUsed_[row] = 1;
                coefficient_[row] = 0.0;
                overlap_.push_back(row);
            }
    for (int row : overlap_)
        rowUsed_[row] = 0;
    std::sort(overlap_.begin(), overlap_.end());
}

double RowSpace::Dot(const SparseVector& q) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < q.index.size(); ++i)
        sum += work_[q.index[i]] * q.value[i];
    return sum;
}

void RowSpace::Subtract(int row) {
    const SparseVector& q = rows_[row].q;
    const double along = Dot(q);
    coefficient_[row] += along;
    for (std::size_t i = 0; i < q.index.size(); ++i) {
        const int column = q.index[i];
        if (columnUsed_[column] == 0) {
            columnUsed_[column] = 1;
            workColumns_.push_back(column);
        }
        work_[column] -= along * q.value[i];
    }
}

void RowSpace::StoreRemainder(double norm) {
    Row row;
    row.diagonal = norm;
    const int number = RowCount();
    for (int column : workColumns_)
        if (std::fabs(work_[column]) > kNegligible) {
            row.q.index.push_back(column);
            row.q.value.push_back(work_[column] / norm);
            rowsOfColumn_[column].push_back(number);
        }
    for (int earlier : overlap_)
        if (std::fabs(coefficient_[earlier]) > kNegligible) {
            row.r.index.push_back(earlier);
            row.r.value.push_back(coefficient_[earlier]);
        }
    rows_.push_back(std::move(row));
}

double RowSpace::Append(std::span<const int> index, std::span<const double> value, double leastSine) {
    for (std::size_t i = 0; i < index.size(); ++i) {
        work_[index[i]] = value[i];
        columnUsed_[index[i]] = 1;
        workColumns_.push_back(index[i]);
    }
    CollectOverlap(index);
    for (int pass = 0; pass < 2; ++pass)
        for (int row : overlap_)
            Subtract(row);
    double normSq = 0.0;
    for (int column : workColumns_)
        normSq += work_[column] * work_[column];
    const double norm = std::sqrt(normSq);
    if (norm > leastSine)
        StoreRemainder(norm);
    for (int column : workColumns_) {
        work_[column] = 0.0;
        columnUsed_[column] = 0;
    }
    workColumns_.clear();
    return norm;
}

void RowSpace::Truncate(int rowCount) {
    while (RowCount() > rowCount) {
        for (int column : rows_.back().q.index)
            rowsOfColumn_[column].pop_back(); // the last row is the last entry of each of its columns
        rows_.pop_back();
    }
    rowUsed_.resize(rows_.size());
}

void RowSpace::ShortestStep(std::span<const double> residuals, int firstRow, std::vector<double>& step,
                            std::vector<int>& touched) const {
    std::vector<double> z(rows_.size(), 0.0);
    for (std::size_t i = static_cast<std::size_t>(firstRow); i < rows_.size(); ++i) {
        const Row& row = rows_[i];
        double rest = -residuals[i];
        for (std::size_t k = 0; k < row.r.index.size(); ++k)
            rest -= row.r.value[k] * z[row.r.index[k]];
        z[i] = rest / row.diagonal;
        if (z[i] == 0.0)
            continue;
        for (std::size_t k = 0; k < row.q.index.size(); ++k) {
            step[row.q.index[k]] += z[i] * row.q.value[k];
            touched.push_back(row.q.index[k]);
        }
    }
}

void RowSpace::RemoveRowSpace(std::vector<double>& vector) const {
    for (int pass = 0; pass < 2; ++pass)
        for (const Row& row : rows_) {
            double along = 0.0;
            for (std::size_t k = 0; k < row.q.index.size(); ++k)
                along += vector[row.q.index[k]] * row.q.value[k];
            for (std::size_t k = 0; k < row.q.index.size(); ++k)
                vector[row.q.index[k]] -= along * row.q.value[k];
        }
}

} // namespace Tessera::Geometry
