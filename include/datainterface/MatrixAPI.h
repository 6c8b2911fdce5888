// SPDX-License-Identifier: MIT
/// Matrix arithmetic over BLAS, and decompositions and solvers over LAPACK.
///
/// Operands of unsuitable sizes raise the text that the comment names, before any element is
/// written. Unsuitable numbers (a matrix that is singular, not positive definite or not finite)
/// give the result false and undefined outputs.
#pragma once
#include <QVector>
#include "datainterface/export.h"
#include "datainterface/vorn_diagonal_matrix.h"
#include "datainterface/vorn_matrix.h"
#include "datainterface/vorn_vector.h"

/// The transpose; no element moves.
DATAINTERFACE_EXPORT vorn_matrix operator~(const vorn_matrix &a);

/// dgemm with the transpose flags of the operands. "Inconsistent matrix size".
DATAINTERFACE_EXPORT vorn_matrix operator*(const vorn_matrix &a, const vorn_matrix &b);
DATAINTERFACE_EXPORT vorn_diagonal_matrix operator*(const vorn_diagonal_matrix &a,
                                                    const vorn_diagonal_matrix &b);
/// Scales the rows of `b`, the columns of `a`. "Inconsistent matrix size".
DATAINTERFACE_EXPORT vorn_matrix operator*(const vorn_diagonal_matrix &a, const vorn_matrix &b);
DATAINTERFACE_EXPORT vorn_matrix operator*(const vorn_matrix &a, const vorn_diagonal_matrix &b);
/// dgemv. "Matrix size mismatch".
DATAINTERFACE_EXPORT vorn_vector operator*(const vorn_matrix &a, const vorn_vector &x);
/// ~a * x.
DATAINTERFACE_EXPORT vorn_vector operator*(const vorn_vector &x, const vorn_matrix &a);
/// Element by element. "Matrix size mismatch".
DATAINTERFACE_EXPORT vorn_vector operator*(const vorn_diagonal_matrix &a, const vorn_vector &x);
DATAINTERFACE_EXPORT vorn_vector operator*(const vorn_vector &x, const vorn_diagonal_matrix &a);
DATAINTERFACE_EXPORT vorn_matrix operator*(const vorn_matrix &a, double factor);
DATAINTERFACE_EXPORT vorn_matrix operator*(double factor, const vorn_matrix &a);
/// Element by element. "Inconsistent matrix size".
DATAINTERFACE_EXPORT vorn_matrix operator+(const vorn_matrix &a, const vorn_matrix &b);
DATAINTERFACE_EXPORT vorn_matrix operator-(const vorn_matrix &a, const vorn_matrix &b);
DATAINTERFACE_EXPORT vorn_matrix operator-(const vorn_matrix &a, const vorn_diagonal_matrix &b);
DATAINTERFACE_EXPORT vorn_matrix operator-(const vorn_diagonal_matrix &a, const vorn_matrix &b);
/// Element by element. "Inconsistent vector size".
DATAINTERFACE_EXPORT vorn_vector operator*(const vorn_vector &a, const vorn_vector &b);
DATAINTERFACE_EXPORT vorn_vector operator/(const vorn_vector &a, const vorn_vector &b);
DATAINTERFACE_EXPORT vorn_vector operator+(const vorn_vector &a, const vorn_vector &b);
DATAINTERFACE_EXPORT vorn_vector operator-(const vorn_vector &a, const vorn_vector &b);

/// False for a negative size.
DATAINTERFACE_EXPORT bool VORN_GetIdentityMatrix(int n, vorn_diagonal_matrix &identity);
/// A copy of the row; "Invalid row index" out of range.
DATAINTERFACE_EXPORT vorn_vector VORN_GetMatrixRow(const vorn_matrix &a, int row);
/// A copy of the column; "Matrix size mismatch" out of range.
DATAINTERFACE_EXPORT vorn_vector VORN_GetMatrixCol(const vorn_matrix &a, int col);
/// False when the index or the size does not fit.
DATAINTERFACE_EXPORT bool VORN_SetMatrixRow(vorn_matrix &a, int row, const vorn_vector &values);
/// False when the index or the size does not fit.
DATAINTERFACE_EXPORT bool VORN_SetMatrixCol(vorn_matrix &a, int col, const vorn_vector &values);
/// False out of range.
DATAINTERFACE_EXPORT bool VORN_RemoveMatrixRow(vorn_matrix &a, int row);
/// False out of range.
DATAINTERFACE_EXPORT bool VORN_RemoveMatrixCol(vorn_matrix &a, int col);
/// The sum of the diagonal; "Matrix size mismatch" unless square.
DATAINTERFACE_EXPORT void VORN_GetMatrixTrace(vorn_matrix &a, double &trace);

/// DGETRF, DGETRI. "Matrix must be square".
DATAINTERFACE_EXPORT bool VORN_InvertMatrix(const vorn_matrix &a, vorn_matrix &inverse);
/// a * x = b through DGETRF and DGETRS, with `refine` one step of DGERFS. A transposed `a` is not
/// copied into another order. A system of one equation is a division, even by 0. "Matrix must be
/// square", "Matrix-vector mismatch".
DATAINTERFACE_EXPORT bool VORN_SolveMatrixEquation(const vorn_matrix &a, const vorn_vector &b,
                                                   vorn_vector &x, bool refine);
/// Each column of `b` is a right side. "Matrix must be square", "Matrix size mismatch".
DATAINTERFACE_EXPORT bool VORN_SolveMatrixEquations(const vorn_matrix &a, const vorn_matrix &b,
                                                    vorn_matrix &x, bool refine);
/// The same with refinement and the error bounds of DGERFS for each column: the relative forward
/// error of `x` and the componentwise relative backward error.
DATAINTERFACE_EXPORT bool VORN_SolveMatrixEquations(const vorn_matrix &a, const vorn_matrix &b,
                                                    vorn_matrix &x, QVector<double> &forwardErrors,
                                                    QVector<double> &backwardErrors);
/// a = u * s * v for m by n, m >= n: `u` m by n, `s` the singular values in decreasing order, `v` n
/// by n, the right factor in the form of LAPACK, that is, transposed. DGEBRD, DORGBR, DBDSQR. m < n
/// raises "SVD requires rows < columns". Also false when `showProgress` is set and the user has
/// cancelled.
DATAINTERFACE_EXPORT bool VORN_SVD(const vorn_matrix &a, vorn_matrix &u, vorn_matrix &v,
                                   vorn_diagonal_matrix &s, bool showProgress);
/// Whether the smallest singular value is above 1e-12 times the largest. "Matrix must be square".
DATAINTERFACE_EXPORT bool VORN_IsWellConditioned(const vorn_matrix &a, bool showProgress);
/// a = l * ~l through DPOTRF; the upper half of `l` is zero. "Matrix must be square".
DATAINTERFACE_EXPORT bool VORN_Cholesky(const vorn_matrix &a, vorn_matrix &l);
/// a = ~u * u. @return 0, or the order of the leading minor that is not positive definite.
DATAINTERFACE_EXPORT int VORN_Upper_Cholesky(const vorn_matrix &a, vorn_matrix &u);
/// The real and the imaginary part of each eigenvalue. DGEBAL, DGEHRD, DHSEQR. "Matrix must be
/// square".
DATAINTERFACE_EXPORT bool VORN_MatrixEigenvalues(const vorn_matrix &a, QVector<double> &real,
                                                 QVector<double> &imaginary);
