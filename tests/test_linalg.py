"""Dense and sparse linear algebra of Env against NumPy: every routine, flag
and triangle; the Cholesky factor reproduces P A P' and solves systems; bad
matrices give codes; the length rules of the module."""
import numpy as np
import pytest

import _qrn
from conftest import dv, iv, qv, raises

NO, YES = 0, 1  # transpose flags
LO, UP = 0, 1  # triangle selectors
AMD, NATURAL = 0, 1  # Cholesky orderings
NONE, SHIFT = 0, 1  # Cholesky regularizations
NULL_POINTER, DUP_INDEX, PTR_RANGE, VALUE_NAN = 1002, 1104, 1106, 1108
DIMENSION, TRANSPOSE, UPLO, NOT_POSDEF = 2200, 2201, 2202, 2203
ROW_INDEX, NOT_LOWER, SINGULAR, ORDERING, REGULARIZATION = 2205, 2206, 2207, 2208, 2209

rng = np.random.default_rng(7)


def col(a):
    """A matrix as the library stores it: by columns, as a flat array."""
    return np.asfortranarray(np.asarray(a, dtype=float)).ravel(order="F").copy()


def mat(flat, m, n):
    return np.asarray(flat, dtype=float).reshape((n, m)).T


def spd(n):
    b = rng.standard_normal((n, n))
    return b @ b.T + n * np.eye(n)


def test_vector_routines(env):
    x, y = rng.standard_normal(6), rng.standard_normal(6)
    yy = y.copy()
    assert env.axpy_idOO_5(6, 2.5, memoryview(x), memoryview(yy)) == (0, None)
    assert np.allclose(yy, 2.5 * x + y)
    code, d = env.dot_iOO_4(6, memoryview(x), memoryview(y))
    assert code == 0 and d == pytest.approx(x @ y)
    assert env.dot_iOO_4(0, None, None) == (0, 0.0)
    with raises("Array is too short in argument y"):
        env.axpy_idOO_5(6, 1.0, memoryview(x), memoryview(y[:5].copy()))
    with pytest.raises(BufferError):  # the library would write into read-only memory
        env.axpy_idOO_5(1, 1.0, dv(1.0), memoryview(bytes(8)).cast("d"))
    assert env.dot_iOO_4(3, None, None)[0] == NULL_POINTER
    assert env.axpy_idOO_5(-1, 1.0, None, None)[0] == DIMENSION


def test_gemv_both_flags(env):
    m, n = 4, 3
    a = rng.standard_normal((m, n))
    for flag, op in ((NO, a), (YES, a.T)):
        x = rng.standard_normal(op.shape[1])
        y = rng.standard_normal(op.shape[0])
        out = y.copy()
        assert env.gemv_iiidOOdO_9(flag, m, n, 1.5, memoryview(col(a)), memoryview(x), -0.5,
                                   memoryview(out)) == (0, None)
        assert np.allclose(out, 1.5 * op @ x - 0.5 * y)
    # beta = 0 ignores what y held, NaN included
    out = np.full(m, np.nan)
    env.gemv_iiidOOdO_9(NO, m, n, 1.0, memoryview(col(a)), memoryview(np.ones(n)), 0.0, memoryview(out))
    assert np.allclose(out, a.sum(axis=1))
    # lengths: x has n entries and y m, or m and n when transposed (any non-zero flag)
    a23 = memoryview(np.zeros(6))
    with raises("Array is too short in argument x"):
        env.gemv_iiidOOdO_9(NO, 2, 3, 1.0, a23, dv(0, 0), 0.0, dv(0, 0))
    with raises("Array is too short in argument y"):
        env.gemv_iiidOOdO_9(7, 2, 3, 1.0, a23, dv(0, 0), 0.0, dv(0, 0))
    assert env.gemv_iiidOOdO_9(7, 2, 3, 1.0, a23, dv(0, 0), 0.0, dv(0, 0, 0))[0] == TRANSPOSE
    # an empty product scales y by beta
    y = np.array([2.0, 4.0])
    assert env.gemv_iiidOOdO_9(NO, 2, 0, 1.0, None, None, 0.5, memoryview(y)) == (0, None)
    assert list(y) == [1.0, 2.0]


def test_gemm_every_flag_pair(env):
    m, n, k = 4, 5, 3
    for ta in (NO, YES):
        for tb in (NO, YES):
            opa, opb = rng.standard_normal((m, k)), rng.standard_normal((k, n))
            a = opa.T if ta else opa
            b = opb.T if tb else opb
            c0 = rng.standard_normal((m, n))
            c = col(c0)
            assert env.gemm_iiiiidOOdO_11(ta, tb, m, n, k, 2.0, memoryview(col(a)), memoryview(col(b)), 3.0,
                                          memoryview(c)) == (0, None)
            assert np.allclose(mat(c, m, n), 2.0 * opa @ opb + 3.0 * c0), (ta, tb)
    # a needs m * k entries whatever its flag
    with raises("Array is too short in argument a"):
        env.gemm_iiiiidOOdO_11(YES, NO, 2, 1, 3, 1.0, memoryview(np.zeros(5)), memoryview(np.zeros(3)), 0.0,
                               memoryview(np.zeros(2)))
    assert env.gemm_iiiiidOOdO_11(NO, 2, 1, 1, 1, 1.0, dv(1), dv(1), 0.0, dv(1))[0] == TRANSPOSE
    assert env.gemm_iiiiidOOdO_11(NO, NO, 1, 1, -1, 1.0, None, None, 0.0, dv(1))[0] == DIMENSION
    assert env.gemm_iiiiidOOdO_11(NO, NO, 2, 2, 2, 1.0, None, None, 0.0, None)[0] == NULL_POINTER


def test_syrk_updates_one_triangle(env):
    n, k = 5, 3
    for uplo, part in ((LO, np.tril), (UP, np.triu)):
        for trans in (NO, YES):
            a = rng.standard_normal((k, n) if trans else (n, k))
            prod = a.T @ a if trans else a @ a.T
            c0 = rng.standard_normal((n, n))
            c = col(c0)
            assert env.syrk_iiiidOdO_9(uplo, trans, n, k, 0.5, memoryview(col(a)), 2.0,
                                       memoryview(c)) == (0, None)
            got = mat(c, n, n)
            assert np.allclose(part(got), part(0.5 * prod + 2.0 * c0)), (uplo, trans)
            other = np.triu if uplo == LO else np.tril
            assert np.array_equal(other(got, 1 if uplo == LO else -1), other(c0, 1 if uplo == LO else -1))
    assert env.syrk_iiiidOdO_9(2, NO, 1, 1, 1.0, dv(1), 0.0, dv(1))[0] == UPLO


def test_potrf_both_triangles(env):
    n = 6
    a = spd(n)
    low = np.linalg.cholesky(a)
    for uplo in (LO, UP):
        work = col(a + (np.triu(np.full((n, n), 9.0), 1) if uplo == LO else 0))
        assert env.potrf_iiO_4(uplo, n, memoryview(work)) == (0, None)
        got = mat(work, n, n)
        if uplo == LO:
            assert np.allclose(np.tril(got), low)
            assert np.array_equal(np.triu(got, 1), np.triu(a + 9.0, 1))  # not touched
        else:
            assert np.allclose(np.triu(got), low.T)
            assert np.array_equal(np.tril(got, -1), np.tril(a, -1))
    indefinite = col(np.diag([1.0, -1.0, 1.0]))
    assert env.potrf_iiO_4(LO, 3, memoryview(indefinite))[0] == NOT_POSDEF
    nan = col(np.diag([1.0, np.nan, 1.0]))
    assert env.potrf_iiO_4(LO, 3, memoryview(nan))[0] == VALUE_NAN
    with raises("Array is too short in argument a"):
        env.potrf_iiO_4(LO, 3, memoryview(np.zeros(10)))
    assert env.potrf_iiO_4(LO, 0, None) == (0, None)


def test_eigenvalues_both_variants_and_triangles(env):
    n = 7
    a = rng.standard_normal((n, n))
    a = a + a.T
    want = np.linalg.eigvalsh(a)
    for uplo in (LO, UP):
        # the triangle not read holds garbage
        stored = np.tril(a) + np.triu(np.full((n, n), 1e3), 1) if uplo == LO else np.triu(a) - np.tril(np.ones((n, n)), -1)
        flat = col(stored)
        w = np.zeros(n)
        assert env.syeig_iiOO_5(uplo, n, memoryview(flat), memoryview(w)) == (0, None)
        assert np.allclose(w, want)
        assert np.array_equal(flat, col(stored))  # a is not changed
        wb = bytearray(b"old")
        assert env.syeig_iiOO_4(uplo, n, memoryview(flat), wb) == (0, None)
        assert len(wb) == 8 * n and np.allclose(np.frombuffer(wb), want)
        # syevd: the same values, and the eigenvectors over a
        for method in ("syevd_iiOO_5", "syevd_iiOO_4"):
            vecs = col(stored)
            out = np.zeros(n) if method.endswith("5") else bytearray()
            target = memoryview(out) if method.endswith("5") else out
            assert getattr(env, method)(uplo, n, memoryview(vecs), target) == (0, None)
            w = np.frombuffer(out) if isinstance(out, bytearray) else out
            v = mat(vecs, n, n)
            assert np.allclose(w, want)
            assert np.allclose(a @ v, v * w) and np.allclose(v.T @ v, np.eye(n))
    wb = bytearray(b"xyz")
    assert env.syeig_iiOO_4(LO, 0, None, wb) == (0, None) and wb == bytearray()
    with raises("Bytearray object for argument w"):
        env.syeig_iiOO_4(LO, 1, dv(1), None)
    with raises("Array is too short in argument w"):
        env.syeig_iiOO_5(LO, 2, dv(1, 0, 0, 1), dv(0, 0, 0))
    assert env.syeig_iiOO_5(LO, 1, dv(1), None) == (0, None)  # no eigenvalues wanted
    assert env.syeig_iiOO_5(LO, 2, dv(1, np.nan, np.nan, 1), dv(0, 0))[0] == VALUE_NAN
    with pytest.raises(BufferError):
        env.syevd_iiOO_5(LO, 1, memoryview(bytes(8)).cast("d"), dv(0))


def test_disposed_env_gives_codes(env):
    e = _qrn.Env()
    e.dispose()
    assert e.dot_iOO_4(0, None, None) == (1000, None)
    assert e.potrf_iiO_4(LO, 0, None) == (1000, None)
    assert e.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, None, None, None, None,
                                                   *[bytearray() for _ in range(6)]) == (1000, None)


# ---- sparse Cholesky and the triangular solve ---------------------------------------

def lower_columns(a, shuffle=False):
    """The lower triangle of a by columns: anzc, aptrc, asubc, avalc (numpy arrays)."""
    n = a.shape[0]
    nz, ptr, sub, val = [], [], [], []
    for j in range(n):
        rows = [i for i in range(j, n) if a[i, j] != 0]
        if shuffle:
            rows = list(rng.permutation(rows))
        ptr.append(len(sub))
        nz.append(len(rows))
        sub += rows
        val += [a[i, j] for i in rows]
    return (np.array(nz, dtype=np.int32), np.array(ptr, dtype=np.int64), np.array(sub, dtype=np.int32),
            np.array(val, dtype=float))


def sparse_spd(n, density=0.15):
    b = np.where(rng.random((n, n)) < density, rng.standard_normal((n, n)), 0.0)
    a = b @ b.T + np.diag(rng.random(n) + 0.5)
    a[np.abs(a) < 1e-14] = 0.0
    return a


def factor(env, a, ordering=AMD, regularization=NONE, tol=0.0, shuffle=False):
    arrays = [memoryview(x) for x in lower_columns(a, shuffle)]
    outs = [bytearray() for _ in range(6)]
    code, nnz = env.computesparsecholesky_iidOOOOOOOOOO_8(ordering, regularization, tol, *arrays, *outs)
    if code != 0:
        return code, None
    perm, diag, lnzc, lptrc, lsubc, lvalc = outs
    f = {"perm": np.frombuffer(perm, np.int32), "diag": np.frombuffer(diag), "lnzc": np.frombuffer(lnzc, np.int32),
         "lptrc": np.frombuffer(lptrc, np.int64), "lsubc": np.frombuffer(lsubc, np.int32),
         "lvalc": np.frombuffer(lvalc), "nnz": nnz}
    assert isinstance(nnz, int) and len(f["lsubc"]) == nnz and len(f["lvalc"]) == nnz
    return code, f


def dense_factor(f, n):
    low = np.zeros((n, n))
    for j in range(n):
        p, q = f["lptrc"][j], f["lptrc"][j] + f["lnzc"][j]
        rows = f["lsubc"][p:q]
        assert rows[0] == j and list(rows) == sorted(rows)  # diagonal first, then increasing rows
        low[rows, j] = f["lvalc"][p:q]
    return low


def solve(env, f, b):
    """A x = b through the factor: c = P b, L y = c, L' z = y, x = P' z."""
    n = len(b)
    views = [memoryview(f[k]) for k in ("lnzc", "lptrc", "lsubc", "lvalc")]
    y = b[f["perm"]].copy()
    assert env.sparsetriangularsolvedense_iOOOOO_7(NO, *views, memoryview(y)) == (0, None)
    assert env.sparsetriangularsolvedense_iOOOOO_7(YES, *views, memoryview(y)) == (0, None)
    x = np.empty(n)
    x[f["perm"]] = y
    return x


@pytest.mark.parametrize("ordering", [AMD, NATURAL])
def test_cholesky_reproduces_the_permuted_matrix_and_solves(env, ordering):
    n = 40
    a = sparse_spd(n)
    code, f = factor(env, a, ordering, shuffle=True)
    assert code == 0
    p = f["perm"]
    assert sorted(p) == list(range(n))
    if ordering == NATURAL:
        assert list(p) == list(range(n))
    assert np.all(f["diag"] == 0.0)
    assert list(f["lptrc"]) == list(np.concatenate([[0], np.cumsum(f["lnzc"])[:-1]]))
    low = dense_factor(f, n)
    assert np.allclose(low @ low.T, a[np.ix_(p, p)])
    for _ in range(3):
        b = rng.standard_normal(n)
        assert np.allclose(solve(env, f, b), np.linalg.solve(a, b))


def test_triangular_solve_both_flags_against_numpy(env):
    n = 12
    code, f = factor(env, sparse_spd(n, 0.3))
    low = dense_factor(f, n)
    views = [memoryview(f[k]) for k in ("lnzc", "lptrc", "lsubc", "lvalc")]
    b = rng.standard_normal(n)
    for flag, m in ((NO, low), (YES, low.T)):
        x = b.copy()
        assert env.sparsetriangularsolvedense_iOOOOO_7(flag, *views, memoryview(x)) == (0, None)
        assert np.allclose(m @ x, b)


def test_regularization_of_a_singular_matrix(env):
    n = 6
    v = rng.standard_normal((n, 3))
    a = v @ v.T  # rank 3: positive semidefinite and singular
    assert factor(env, a, regularization=NONE)[0] == NOT_POSDEF
    log = []
    env.set_Stream(0, log.append)
    code, f = factor(env, a, regularization=SHIFT, tol=1e-8)
    assert code == 0
    delta = f["diag"][0]
    assert delta > 0 and np.all(f["diag"] == delta)
    assert delta >= 1e-8 * max(1.0, np.abs(np.diag(a)).max())
    low = dense_factor(f, n)
    p = f["perm"]
    assert np.allclose(low @ low.T, a[np.ix_(p, p)] + delta * np.eye(n))
    assert len(log) == 1 and "A +" in log[0]
    # a well-conditioned matrix is left as it is
    code, f = factor(env, spd(n), regularization=SHIFT, tol=1e-8)
    assert code == 0 and np.all(f["diag"] == 0.0) and len(log) == 1
    assert factor(env, a, regularization=SHIFT, tol=0.0)[0] == REGULARIZATION
    assert factor(env, a, regularization=5)[0] == REGULARIZATION
    assert factor(env, a, ordering=9)[0] == ORDERING


def test_bad_matrices_give_codes_and_leave_bytearrays(env):
    def call(nz, ptr, sub, val, n_outs=None):
        outs = [bytearray(b"keep") for _ in range(6)]
        code, payload = env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, iv(*nz), qv(*ptr), iv(*sub),
                                                                  dv(*val), *outs)
        assert payload is None and all(o == bytearray(b"keep") for o in outs)
        return code

    assert call([1, 1], [0, 1], [0, 0], [1.0, 1.0]) == NOT_LOWER  # (0, 1) is above the diagonal
    assert call([1, 1], [0, 1], [0, 2], [1.0, 1.0]) == ROW_INDEX
    assert call([2, 1], [0, 2], [0, 0, 1], [1.0, 1.0, 1.0]) == DUP_INDEX
    assert call([1, 1], [0, 1], [0, 1], [1.0, np.nan]) == VALUE_NAN
    assert call([2, 1], [0, 2], [0, 1, 1], [1.0, 2.0, 1.0]) == NOT_POSDEF  # [[1, 2], [2, 1]]
    assert call([1, -1], [0, 1], [0], [1.0]) == 1105
    assert call([1, 0], [0, -1], [0], [1.0]) == PTR_RANGE
    assert env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, None, qv(0, 0), None, None,
                                                     *[bytearray() for _ in range(6)])[0] == NULL_POINTER
    # an empty matrix has an empty factor
    outs = [bytearray(b"x") for _ in range(6)]
    assert env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, None, None, None, None, *outs) == (0, 0)
    assert all(o == bytearray() for o in outs)


def test_cholesky_argument_checks(env):
    outs = [bytearray() for _ in range(6)]
    args = [iv(1, 1), qv(0, 1), iv(0, 1), dv(1.0, 1.0)]
    with raises("Mismatching lengths of arguments anzc,aptrc"):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, iv(1, 1, 1), qv(0, 1), *args[2:], *outs)
    # the index and value arrays must reach as far as the columns point
    with raises("Array is too short in argument asubc"):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, iv(1, 1), qv(0, 5), *args[2:], *outs)
    with raises("Array is too short in argument avalc"):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, *args[:3], dv(1.0), *outs)
    with raises("Array is too short in argument asubc"):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, iv(1), qv(2**63 - 1), iv(0), dv(1.0), *outs)
    for k, name in enumerate(("perm", "diag", "lnzc", "lptrc", "lsubc", "lvalc")):
        bad = list(outs)
        bad[k] = None
        with raises(f"Bytearray object for argument {name}"):
            env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, *args, *bad)
    with raises("Expected a continuous memoryview object for argument aptrc"):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, args[0], iv(0, 1), *args[2:], *outs)
    # a bytearray that cannot be resized: the interpreter's error, nothing leaks
    held = bytearray()
    view = memoryview(held)
    with pytest.raises(BufferError):
        env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, *args, *outs[:5], held)
    view.release()
    assert env.computesparsecholesky_iidOOOOOOOOOO_8(AMD, NONE, 0.0, *args, *outs[:5], held) == (0, 2)
    assert len(held) == 16


def test_triangular_solve_checks(env):
    # L = [[2, 0], [1, 4]] by columns: (0: 2, 1: 1), (1: 4)
    nz, ptr, sub, val = iv(2, 1), qv(0, 2), iv(0, 1, 1), dv(2.0, 1.0, 4.0)
    b = np.array([2.0, 9.0])
    assert env.sparsetriangularsolvedense_iOOOOO_7(NO, nz, ptr, sub, val, memoryview(b)) == (0, None)
    assert list(b) == [1.0, 2.0]
    with raises("Array is too short in argument lnzc"):
        env.sparsetriangularsolvedense_iOOOOO_7(NO, iv(1, 1, 1, 1, 1), qv(0, 1, 2, 3), iv(0), dv(1.0),
                                                memoryview(np.zeros(4)))
    # the length tests replace the mismatch messages of the two groups
    with raises("Array is too short in argument lvalc"):
        env.sparsetriangularsolvedense_iOOOOO_7(NO, nz, ptr, sub, dv(1.0), memoryview(b))
    with raises("Array is too short in argument lnzc"):  # n is the length of b
        env.sparsetriangularsolvedense_iOOOOO_7(NO, nz, None, sub, val, memoryview(np.zeros(3)))
    assert env.sparsetriangularsolvedense_iOOOOO_7(NO, None, None, sub, val, memoryview(b))[0] == NULL_POINTER

    def code(nz, ptr, sub, val, flag=NO):
        b = np.array([1.0, 1.0])
        c, _ = env.sparsetriangularsolvedense_iOOOOO_7(flag, iv(*nz), qv(*ptr), iv(*sub), dv(*val), memoryview(b))
        assert c == 0 or list(b) == [1.0, 1.0]  # b untouched on failure
        return c

    assert code([2, 1], [0, 2], [0, 1, 1], [2.0, 1.0, 4.0], flag=2) == TRANSPOSE
    assert code([2, 1], [0, 2], [1, 0, 1], [2.0, 1.0, 4.0]) == NOT_LOWER  # diagonal not first
    assert code([2, 1], [0, 2], [0, 1, 0], [2.0, 1.0, 4.0]) == NOT_LOWER  # entry above the diagonal
    assert code([2, 1], [0, 2], [0, 5, 1], [2.0, 1.0, 4.0]) == ROW_INDEX
    assert code([2, 1], [0, 2], [0, 1, 1], [0.0, 1.0, 4.0]) == SINGULAR
    assert code([2, 0], [0, 2], [0, 1, 1], [2.0, 1.0, 4.0]) == SINGULAR
    assert code([2, 1], [0, 3], [0, 1, 1], [2.0, 1.0, 4.0]) == PTR_RANGE
    assert code([2, 1], [0, -1], [0, 1, 1], [2.0, 1.0, 4.0]) == PTR_RANGE
