// Semidefinite variables, the symmetric matrix store, barC/barA/barF and the
// solution values of semidefinite variables through the C interface.
#include <cmath>
#include <vector>

#include "fixture.hpp"

namespace {

using I32 = std::vector<qrn_int32>;
using I64 = std::vector<qrn_int64>;
using Dbl = std::vector<double>;

struct Sdp : Fixture {
  explicit Sdp(I32 dims, int numcon = 0, int numvar = 0) : Fixture(numcon, numvar) {
    CHECK_EQ(QRN_appendbarvars(task, static_cast<qrn_int32>(dims.size()), dims.data()), QRN_RES_OK);
  }
  qrn_int64 mat(qrn_int32 dim, I32 i, I32 j, Dbl v) {
    qrn_int64 idx = -1;
    CHECK_EQ(QRN_appendsparsesymmat(task, dim, (qrn_int64)v.size(), i.data(), j.data(), v.data(), &idx), QRN_RES_OK);
    return idx;
  }
};

}  // namespace

TEST(symmetric_matrix_store) {
  Sdp f({});
  qrn_int64 idx = -1;
  I32 up_i{0}, up_j{1}, out_i{2}, out_j{0}, rep_i{1, 1}, rep_j{0, 0};
  Dbl one{1.0}, two{1.0, 2.0};
  CHECK_EQ(QRN_appendsparsesymmat(f.task, 2, 1, up_i.data(), up_j.data(), one.data(), &idx), QRN_RES_ERR_SYMMAT_UPPER);
  CHECK_EQ(QRN_appendsparsesymmat(f.task, 2, 1, out_i.data(), out_j.data(), one.data(), &idx), QRN_RES_ERR_SYMMAT_RANGE);
  CHECK_EQ(QRN_appendsparsesymmat(f.task, 2, 2, rep_i.data(), rep_j.data(), two.data(), &idx),
           QRN_RES_ERR_SYMMAT_REPEATED);
  // Read back sorted by column, then row.
  CHECK_EQ(f.mat(3, {2, 1, 0, 2}, {1, 0, 0, 0}, {4, 2, 1, 3}), 0);
  qrn_int32 dim = 0, type = -1;
  qrn_int64 nz = 0;
  CHECK_EQ(QRN_getsymmatinfo(f.task, 0, &dim, &nz, &type), QRN_RES_OK);
  CHECK_EQ(std::make_tuple(dim, nz, type), std::make_tuple(3, qrn_int64{4}, (qrn_int32)QRN_SYMMAT_TYPE_SPARSE));
  I32 si(4), sj(4);
  Dbl sv(4);
  CHECK_EQ(QRN_getsparsesymmat(f.task, 0, 3, si.data(), sj.data(), sv.data()), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(QRN_getsparsesymmat(f.task, 0, 4, si.data(), sj.data(), sv.data()), QRN_RES_OK);
  CHECK_EQ(si, (I32{0, 1, 2, 2}));
  CHECK_EQ(sj, (I32{0, 0, 0, 1}));
  CHECK_EQ(sv, (Dbl{1, 2, 3, 4}));
  // A list: matrix k takes the next nz[k] triplets.
  I32 dims{1, 2}, li{0, 1, 1}, lj{0, 0, 1};
  I64 lnz{1, 2}, got(2);
  Dbl lv{5, 6, 7};
  CHECK_EQ(QRN_appendsparsesymmatlist(f.task, 2, dims.data(), lnz.data(), li.data(), lj.data(), lv.data(), got.data()),
           QRN_RES_OK);
  CHECK_EQ(got, (I64{1, 2}));
  CHECK_EQ(QRN_getsymmatinfo(f.task, 3, &dim, &nz, &type), QRN_RES_ERR_INDEX_SYMMAT);
}

TEST(barc_bara_positions_and_terms) {
  Sdp f({2, 3}, 3);
  qrn_int64 m2 = f.mat(2, {0, 1}, {0, 0}, {1, 1}), m3 = f.mat(3, {2}, {2}, {1});
  I64 sub{m2, m2};
  Dbl w{2.0, 0.5};
  CHECK_EQ(QRN_putbarcj(f.task, 1, 1, sub.data(), w.data()), QRN_RES_ERR_SYMMAT_DIM);
  CHECK_EQ(QRN_putbarcj(f.task, 0, 2, sub.data(), w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbarcj(f.task, 1, 1, &m3, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbaraij(f.task, 2, 1, 1, &m3, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbaraij(f.task, 3, 1, 1, &m3, w.data()), QRN_RES_ERR_INDEX_CON);
  qrn_int64 nz = 0, num = 0;
  I64 pos(2);
  CHECK_EQ(QRN_getbarcsparsity(f.task, 2, &nz, pos.data()), QRN_RES_OK);
  CHECK_EQ(pos, (I64{0, 1}));
  CHECK_EQ(QRN_getbarasparsity(f.task, 2, &nz, pos.data()), QRN_RES_OK);
  CHECK_EQ(nz, 1);
  qrn_int32 i = -1, j = -1;
  CHECK_EQ(QRN_getbaraidxij(f.task, pos[0], &i, &j), QRN_RES_OK);
  CHECK_EQ(std::make_pair(i, j), std::make_pair(2, 1));
  CHECK_EQ(QRN_getbaraidxij(f.task, pos[0] + 1, &i, &j), QRN_RES_ERR_BAR_POSITION);
  I64 tsub(2);
  Dbl tw(2);
  CHECK_EQ(QRN_getbarcidx(f.task, 0, 1, &j, &num, tsub.data(), tw.data()), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(QRN_getbarcidx(f.task, 0, 2, &j, &num, tsub.data(), tw.data()), QRN_RES_OK);
  CHECK_EQ(tw, w);
  // Block triplets expand the weighted sums: barC_0 = 2.5 * m2.
  qrn_int64 ntrip = 0;
  CHECK_EQ(QRN_getnumbarcblocktriplets(f.task, &ntrip), QRN_RES_OK);
  CHECK_EQ(ntrip, 3);
  I32 bj(3), bk(3), bl(3);
  Dbl bv(3);
  CHECK_EQ(QRN_getbarcblocktriplet(f.task, 3, &ntrip, bj.data(), bk.data(), bl.data(), bv.data()), QRN_RES_OK);
  CHECK_EQ(bk, (I32{0, 1, 2}));
  CHECK_EQ(bv, (Dbl{2.5, 2.5, 2.0}));
  // Row lists replace whole rows; entry p takes the next nummat[p] matrices.
  I32 rows{2, 0}, cols{0, 1, 1};
  I64 ptrb{0, 2}, ptre{2, 3}, nummat{1, 1, 1}, mats{m2, m3, m3};
  Dbl wts{1, 2, 3};
  CHECK_EQ(QRN_putbararowlist(f.task, 2, rows.data(), ptrb.data(), ptre.data(), cols.data(), nummat.data(), mats.data(),
                              wts.data()),
           QRN_RES_OK);
  CHECK_EQ(QRN_getnumbaranz(f.task, &nz), QRN_RES_OK);
  CHECK_EQ(nz, 3);
  CHECK_EQ(QRN_getbaraidx(f.task, (qrn_int64{2} << 31) | 1, 1, &i, &j, &num, tsub.data(), tw.data()), QRN_RES_OK);
  CHECK_EQ(tw[0], 2.0);
  // Written as block triplets, a coefficient is replaced by their sum.
  I32 ti{0, 0}, tj{0, 0}, tk{1, 1}, tl{0, 0};
  Dbl tv{1.0, 2.0};
  CHECK_EQ(QRN_putbarablocktriplet(f.task, 2, ti.data(), tj.data(), tk.data(), tl.data(), tv.data()), QRN_RES_OK);
  CHECK_EQ(QRN_getnumbarablocktriplets(f.task, &ntrip), QRN_RES_OK);
  CHECK_EQ(ntrip, 5);  // (0,0): the sum 3 at (1,0); (0,1), (2,1): one entry each; (2,0): two
  tk = {0, 0}, tl = {1, 1};
  CHECK_EQ(QRN_putbarablocktriplet(f.task, 2, ti.data(), tj.data(), tk.data(), tl.data(), tv.data()),
           QRN_RES_ERR_SYMMAT_UPPER);
}

TEST(removal_renumbers_semidefinite_data) {
  Sdp f({1, 2, 3}, 2, 0);
  qrn_int64 m1 = f.mat(1, {0}, {0}, {1}), m3 = f.mat(3, {0}, {0}, {1});
  Dbl w{1.0};
  CHECK_EQ(QRN_putbarcj(f.task, 0, 1, &m1, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbarcj(f.task, 2, 1, &m3, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbaraij(f.task, 1, 2, 1, &m3, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_appendafes(f.task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putafebarfentry(f.task, 0, 2, 1, &m3, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putbarvarname(f.task, 2, "big"), QRN_RES_OK);
  Dbl x3{1, 0, 0, 2, 0, 3};
  CHECK_EQ(QRN_putbarxj(f.task, QRN_SOL_ITR, 2, x3.data()), QRN_RES_OK);
  I32 gone{1};
  CHECK_EQ(QRN_removebarvars(f.task, 1, gone.data()), QRN_RES_OK);
  qrn_int32 n = 0, dim = 0, asgn = 0, index = -1;
  CHECK_EQ(QRN_getnumbarvar(f.task, &n), QRN_RES_OK);
  CHECK_EQ(n, 2);
  CHECK_EQ(QRN_getdimbarvarj(f.task, 1, &dim), QRN_RES_OK);
  CHECK_EQ(dim, 3);
  CHECK_EQ(QRN_getbarvarnameindex(f.task, "big", &asgn, &index), QRN_RES_OK);
  CHECK_EQ(index, 1);
  I64 pos(2);
  qrn_int64 nz = 0;
  CHECK_EQ(QRN_getbarcsparsity(f.task, 2, &nz, pos.data()), QRN_RES_OK);
  CHECK_EQ(pos, (I64{0, 1}));
  CHECK_EQ(QRN_getbarasparsity(f.task, 2, &nz, pos.data()), QRN_RES_OK);
  CHECK_EQ(pos[0], (qrn_int64{1} << 31) | 1);
  qrn_int32 bv = -1;
  CHECK_EQ(QRN_getafebarfrow(f.task, 0, &bv, nullptr, nullptr, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(bv, 1);
  Dbl back(6);
  CHECK_EQ(QRN_getbarxj(f.task, QRN_SOL_ITR, 1, back.data()), QRN_RES_OK);
  CHECK_EQ(back, x3);
  // Removing constraint 0 moves barA's row 1 to row 0.
  I32 con{0};
  CHECK_EQ(QRN_removecons(f.task, 1, con.data()), QRN_RES_OK);
  CHECK_EQ(QRN_getbarasparsity(f.task, 2, &nz, pos.data()), QRN_RES_OK);
  CHECK_EQ(std::make_pair(nz, pos[0]), std::make_pair(qrn_int64{1}, qrn_int64{1}));
  CHECK_EQ(QRN_removebarvars(f.task, 1, gone.data()), QRN_RES_OK);
  CHECK_EQ(QRN_getnumbaranz(f.task, &nz), QRN_RES_OK);
  CHECK_EQ(nz, 0);
}

TEST(barx_values_activity_and_violation) {
  Sdp f({2}, 0, 1);
  CHECK_EQ(QRN_appendafes(f.task, 1), QRN_RES_OK);
  qrn_int64 a = f.mat(2, {0, 1, 1}, {0, 0, 1}, {1, 2, 3});  // [[1 2] [2 3]]
  Dbl w{1.0};
  CHECK_EQ(QRN_putafebarfentry(f.task, 0, 0, 1, &a, w.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putafefentry(f.task, 0, 0, 10.0), QRN_RES_OK);
  qrn_int64 dom = -1;
  CHECK_EQ(QRN_appendrdomain(f.task, 1, &dom), QRN_RES_OK);
  CHECK_EQ(QRN_appendaccseq(f.task, dom, 1, 0, nullptr), QRN_RES_OK);
  Dbl x{1, 2, 1};  // X = [[1 2] [2 1]]: eigenvalues 3 and -1
  Dbl act(1), viol(1), slice(3);
  CHECK_EQ(QRN_getbarxj(f.task, QRN_SOL_ITR, 0, slice.data()), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_putbarxj(f.task, QRN_SOL_ITR, 0, x.data()), QRN_RES_OK);
  // <A, X> = 1*1 + 2*(2*2) + 3*1 = 12; xx is 0 in the new solution.
  CHECK_EQ(QRN_evaluateacc(f.task, QRN_SOL_ITR, 0, act.data()), QRN_RES_OK);
  CHECK_EQ(act[0], 12.0);
  I32 sub{0};
  CHECK_EQ(QRN_getpviolbarvar(f.task, QRN_SOL_ITR, 1, sub.data(), viol.data()), QRN_RES_OK);
  CHECK(std::fabs(viol[0] - 1.0) < 1e-12);
  CHECK_EQ(QRN_getdviolbarvar(f.task, QRN_SOL_ITR, 1, sub.data(), viol.data()), QRN_RES_OK);
  CHECK_EQ(viol[0], 0.0);
  CHECK_EQ(QRN_getbarxslice(f.task, QRN_SOL_ITR, 0, 1, 2, slice.data()), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(QRN_getbarxslice(f.task, QRN_SOL_ITR, 0, 1, 3, slice.data()), QRN_RES_OK);
  CHECK_EQ(slice, x);
  // The objective's semidefinite part counts in the summary.
  CHECK_EQ(QRN_putbarcj(f.task, 0, 1, &a, w.data()), QRN_RES_OK);
  double s[14];
  CHECK_EQ(QRN_getsolutioninfonew(f.task, QRN_SOL_ITR, &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8],
                                  &s[9], &s[10], &s[11], &s[12], &s[13]),
           QRN_RES_OK);
  CHECK_EQ(s[0], 12.0);
  CHECK(std::fabs(s[3] - 1.0) < 1e-12);
  CHECK_EQ(s[5], 0.0);
  qrn_int32 probtype = -1;
  CHECK_EQ(QRN_getprobtype(f.task, &probtype), QRN_RES_OK);
  CHECK_EQ(probtype, QRN_PROBTYPE_CONIC);
  I32 bad{0};
  CHECK_EQ(QRN_appendbarvars(f.task, 1, bad.data()), QRN_RES_ERR_BARVAR_DIM);
}
