// SPDX-License-Identifier: MIT
/// The BLAS and LAPACK routines in use: CBLAS, and Fortran routines, which take the lengths of
/// character arguments after all other arguments. They are declared here because the headers of the
/// implementations differ in name and place.
#pragma once
#include <cstddef>

extern "C" {
void cblas_dgemm(int order, int transA, int transB, int m, int n, int k, double alpha,
                 const double *a, int lda, const double *b, int ldb, double beta, double *c,
                 int ldc);
void cblas_dgemv(int order, int trans, int m, int n, double alpha, const double *a, int lda,
                 const double *x, int incX, double beta, double *y, int incY);
void cblas_dscal(int n, double alpha, double *x, int incX);

void dgetrf_(const int *m, const int *n, double *a, const int *lda, int *pivots, int *info);
void dgetri_(const int *n, double *a, const int *lda, const int *pivots, double *work,
             const int *lwork, int *info);
void dgetrs_(const char *trans, const int *n, const int *nrhs, const double *a, const int *lda,
             const int *pivots, double *b, const int *ldb, int *info, std::size_t);
void dgerfs_(const char *trans, const int *n, const int *nrhs, const double *a, const int *lda,
             const double *factors, const int *ldf, const int *pivots, const double *b,
             const int *ldb, double *x, const int *ldx, double *ferr, double *berr, double *work,
             int *iwork, int *info, std::size_t);
void dpotrf_(const char *uplo, const int *n, double *a, const int *lda, int *info, std::size_t);
void dgebrd_(const int *m, const int *n, double *a, const int *lda, double *d, double *e,
             double *tauq, double *taup, double *work, const int *lwork, int *info);
void dorgbr_(const char *vect, const int *m, const int *n, const int *k, double *a, const int *lda,
             const double *tau, double *work, const int *lwork, int *info, std::size_t);
void dbdsqr_(const char *uplo, const int *n, const int *ncvt, const int *nru, const int *ncc,
             double *d, double *e, double *vt, const int *ldvt, double *u, const int *ldu,
             double *c, const int *ldc, double *work, int *info, std::size_t);
void dgebal_(const char *job, const int *n, double *a, const int *lda, int *ilo, int *ihi,
             double *scale, int *info, std::size_t);
void dgehrd_(const int *n, const int *ilo, const int *ihi, double *a, const int *lda, double *tau,
             double *work, const int *lwork, int *info);
void dhseqr_(const char *job, const char *compz, const int *n, const int *ilo, const int *ihi,
             double *h, const int *ldh, double *wr, double *wi, double *z, const int *ldz,
             double *work, const int *lwork, int *info, std::size_t, std::size_t);
}

namespace datainterface {

constexpr int kCblasColMajor = 102;
constexpr int kCblasNoTrans = 111;
constexpr int kCblasTrans = 112;

} // namespace datainterface
