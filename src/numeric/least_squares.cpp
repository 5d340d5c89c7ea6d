#include "numeric/least_squares.h"

#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <utility>

#include "numeric/runtime_check.h"

namespace orsanta {
namespace {

// The factorisation is written here, on Eigen's vectors, because Eigen's ColPivHouseholderQR, of the same form, does
// not come to the same outcome. Its solution leaves out columns that are small against a threshold of its own, where a
// polynomial over a narrow or a wide range keeps every column. Its column norms are plain roots of sums of squares,
// which overflow or vanish where a high power of a large or a small position stands (beyond 1e154 or below 1e-154), and
// then the pivots are others or the result is not-a-number.

using Vector = Eigen::Map<Eigen::VectorXd>;

// sqrt of the machine epsilon: what is left of a downdated norm below this share of its last true value is rounding,
// and the norm is formed anew.
constexpr double Downdate_Limit = 1.4901161193847656e-8;
// Rank tolerance for each row or column of the larger dimension, and its upper bound, relative to the first diagonal
// element of the triangle.
constexpr double Tolerance_Step = 2.220446049250313e-15;
constexpr double Tolerance_Bound = 1.4901161193847656e-8;

// Euclidean norm without overflow or underflow on the way.
template <class Column>
double Norm(const Column& column) {
  const double square = column.squaredNorm();
  if (square > 1e-280 && square < 1e280) return std::sqrt(square);
  double largest = 0.0;
  for (const double value : column) {
    if (!std::isfinite(value)) return std::isnan(value) ? value : std::fabs(value);
    largest = std::max(largest, std::fabs(value));
  }
  return largest == 0.0 ? 0.0 : largest * (column / largest).norm();
}

// A = Q R P^T. The triangle R stands on and above the diagonal of the matrix; below it the Householder vectors, whose
// leading 1 is not stored. Column j of R belongs to column jpvt[j] of A.
struct C_Pivoted_Qr {
  std::vector<double> tau;
  std::vector<int> jpvt;
};

// Turns the column below and including row k into (beta, 0, ..., 0) and leaves the Householder vector in the zeros'
// place. Returns tau; 0 if there is nothing to turn.
double Make_Reflector(Vector column, int k) {
  auto tail = column.tail(column.size() - k - 1);
  const double tail_norm = Norm(tail);
  if (tail_norm == 0.0) return 0.0;
  const double alpha = column[k];
  const double beta = -std::copysign(std::hypot(alpha, tail_norm), alpha);
  tail /= alpha - beta;
  column[k] = beta;
  return (beta - alpha) / beta;
}

// Applies the reflector of column k to another column.
void Apply_Reflector(const Vector& reflector, int k, double tau, Vector column) {
  if (tau == 0.0) return;
  const auto v = reflector.tail(reflector.size() - k - 1);
  auto tail = column.tail(column.size() - k - 1);
  const double w = (column[k] + v.dot(tail)) * tau;
  column[k] -= w;
  tail -= w * v;
}

C_Pivoted_Qr Factor_Qr(C_Matrix& matrix) {
  const int rows = matrix.Rows();
  const int columns = matrix.Columns();
  const int steps = std::min(rows, columns);
  const auto column = [&](int j) { return Vector(matrix.Column(j), rows); };

  C_Pivoted_Qr qr{std::vector<double>(static_cast<size_t>(steps)), std::vector<int>(static_cast<size_t>(columns))};
  std::vector<double> vn1(static_cast<size_t>(columns));  // of what is left of each column, downdated
  for (int j = 0; j < columns; ++j) {
    qr.jpvt[static_cast<size_t>(j)] = j;
    vn1[static_cast<size_t>(j)] = Norm(column(j));
  }
  std::vector<double> vn2 = vn1;  // the last ones that were formed from the column itself

  for (int k = 0; k < steps; ++k) {
    // The largest remaining norm, the first on a tie. A not-a-number norm stays where it is.
    const auto begin = vn1.begin() + k;
    const int chosen = k + static_cast<int>(std::max_element(begin, vn1.end()) - begin);
    if (chosen != k) {
      const auto to = static_cast<size_t>(k), from = static_cast<size_t>(chosen);
      column(k).swap(column(chosen));
      std::swap(qr.jpvt[to], qr.jpvt[from]);
      vn1[from] = vn1[to];
      vn2[from] = vn2[to];
    }

    const double tau = Make_Reflector(column(k), k);
    qr.tau[static_cast<size_t>(k)] = tau;
    for (int j = k + 1; j < columns; ++j) {
      Apply_Reflector(column(k), k, tau, column(j));
      double& norm = vn1[static_cast<size_t>(j)];
      double& true_norm = vn2[static_cast<size_t>(j)];
      if (norm == 0.0) continue;
      // The row that is done with leaves the norm.
      const double share = std::fabs(matrix(k, j)) / norm;
      const double left = std::max(0.0, 1.0 - share * share);
      const double since_true = norm / true_norm;
      if (left * since_true * since_true <= Downdate_Limit) {
        norm = true_norm = Norm(column(j).tail(rows - k - 1));
      } else {
        norm *= std::sqrt(left);
      }
    }
  }
  return qr;
}

// The solution with the leading `rank` columns of the factorisation, zeros for the others. A zero on the diagonal is
// not tested.
std::vector<double> Solve_Qr(C_Matrix& matrix, const C_Pivoted_Qr& qr, std::vector<double>& right, int rank) {
  const int rows = matrix.Rows();
  for (size_t k = 0; k < qr.tau.size(); ++k) {
    const int step = static_cast<int>(k);
    Apply_Reflector(Vector(matrix.Column(step), rows), step, qr.tau[k], Vector(right.data(), rows));
  }
  std::vector<double> solution(static_cast<size_t>(matrix.Columns()));
  for (int k = rank - 1; k >= 0; --k) {
    const double value = right[static_cast<size_t>(k)] / matrix(k, k);
    solution[static_cast<size_t>(qr.jpvt[static_cast<size_t>(k)])] = value;
    for (int i = 0; i < k; ++i) right[static_cast<size_t>(i)] -= value * matrix(i, k);
  }
  return solution;
}

// How many leading diagonal elements of the triangle stand above the tolerance, up to the first that does not.
int Find_Rank(C_Matrix& matrix) {
  const int larger = std::max(matrix.Rows(), matrix.Columns());
  const double tolerance = std::min(Tolerance_Step * larger, Tolerance_Bound) * std::fabs(matrix(0, 0));
  const int steps = std::min(matrix.Rows(), matrix.Columns());
  int rank = 0;
  while (rank < steps && std::fabs(matrix(rank, rank)) > tolerance) ++rank;
  return rank;
}

// LU with partial pivoting: the largest magnitude of the column, the first on a tie. A singular matrix is not detected.
// A zero of the right side passes its column over: it stays zero whatever the pivot is, a zero pivot included.
void Solve_Lu(C_Matrix& matrix, std::vector<double>& right) {
  const int n = matrix.Rows();
  Eigen::Map<Eigen::MatrixXd> square(matrix.Column(0), n, n);
  const Eigen::PartialPivLU<Eigen::Ref<Eigen::MatrixXd>> lu(square);
  Vector b(right.data(), n);
  b = lu.solve(b).eval();
}

}  // namespace

std::vector<double> Left_Divide(C_Matrix matrix, std::vector<double> right) {
  if (static_cast<size_t>(matrix.Rows()) != right.size()) {
    Fail_Runtime_Check(__func__, __LINE__, "Matrix dimensions must agree.");
  }
  if (matrix.Rows() == 0 || matrix.Columns() == 0) return std::vector<double>(static_cast<size_t>(matrix.Columns()));
  if (matrix.Rows() == matrix.Columns()) {
    Solve_Lu(matrix, right);
    return right;
  }
  const C_Pivoted_Qr qr = Factor_Qr(matrix);
  return Solve_Qr(matrix, qr, right, Find_Rank(matrix));
}

std::vector<double> Solve_Keeping_All_Columns(C_Matrix matrix, std::vector<double> right, int rank) {
  const C_Pivoted_Qr qr = Factor_Qr(matrix);
  for (int k = rank; k < matrix.Columns(); ++k) matrix(k, k) = 0.0;
  return Solve_Qr(matrix, qr, right, matrix.Columns());
}

}  // namespace orsanta
