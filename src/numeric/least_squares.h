// The solver of all fits: dense linear systems in the least-squares sense.
//
// Rectangular systems go through a Householder QR factorisation with column pivoting: at each step the column with the
// largest remaining norm comes next, the first one on a tie, and the remaining norms are downdated rather than formed
// anew (LAPACK, routine DGEQP3; Golub and Van Loan, Matrix Computations, section 5.4). Square systems go through LU
// with partial pivoting.
//
// Any thread may call; nothing lives past a call.
#pragma once

#include <cstddef>
#include <vector>

namespace orsanta {

// A dense matrix, stored column by column, zero at the start.
class C_Matrix {
 public:
  C_Matrix(int rows, int columns)
      : m_Rows(rows), m_Columns(columns), m_Data(static_cast<size_t>(rows) * static_cast<size_t>(columns)) {}

  int Rows() const { return m_Rows; }
  int Columns() const { return m_Columns; }
  double* Column(int j) { return m_Data.data() + static_cast<ptrdiff_t>(m_Rows) * j; }
  double& operator()(int i, int j) { return Column(j)[i]; }

 private:
  int m_Rows;
  int m_Columns;
  std::vector<double> m_Data;
};

// The left division: solves matrix * p = right and returns p, one element for each column of the matrix.
// - An empty system gives zeros.
// - A square one is solved as it stands; if it is singular, p is infinite or not-a-number.
// - Any other gives the least-squares solution. Columns that depend on the others, as far as rounding lets it be seen,
//   get a coefficient of 0 (the basic solution), and so does an underdetermined system.
// Run-time check: right has as many elements as the matrix has rows.
std::vector<double> Left_Divide(C_Matrix matrix, std::vector<double> right);

// The least-squares solution by the same QR factorisation, but with every column kept. The matrix has at least as many
// rows as columns.
// rank: how many columns the caller knows to be independent. The triangle's diagonal is an exact zero behind them,
// where rounding would leave noise, so that a deficient system gives infinite or not-a-number elements every time. A
// system that is deficient only as far as rounding goes gives elements that rounding decides.
std::vector<double> Solve_Keeping_All_Columns(C_Matrix matrix, std::vector<double> right, int rank);

}  // namespace orsanta
