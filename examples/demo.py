"""A first tour of _qrn: state a small linear problem, read it back, write it as text, solve it.

    minimize    2 x0 + 3 x1 - x2 + 0.5          (optimum: x = (0, 1/2, 11/6), objective 1/6)
    subject to  c0:  1 <=  x0 + 2 x1
                c1:  2 <=  x0 +   x1 + 3 x2  <= 6
                x0 >= 0,   0 <= x1 <= 3,   x2 <= 5
"""
import io
import sys
from array import array

import _qrn

# Bound keys, data format and compression (lib/include/quarn.h).
BK_FREE, BK_LOWER, BK_UPPER, BK_FIXED, BK_RANGED = 0, 1, 2, 3, 4
DATA_FORMAT_TEXT, COMPRESS_NONE = 1, 0
STREAM_MSG = 1
INF = float("inf")


def ok(task, what, result):
    """The payload of a result pair; stops the demo when the library refused the call."""
    code, payload = result if isinstance(result, tuple) else (result, None)
    if code != 0:
        sys.exit(f"{what} failed with response code {code}: {task.getlasterror()[1]}")
    return payload


def show_streams(task):
    """Forward the task's four output streams to print, each with its own tag."""
    for which, tag in enumerate(["log", "msg", "err", "wrn"]):
        task.set_Stream(which, lambda text, tag=tag: print(f"[{tag}] {text}", end=""))


def state_problem(task):
    # Columns of A: column j holds asub/aval[aptrb[j]:aptre[j]].
    return ok(task, "inputdata64", task.inputdata64_iiOdOOOOOOOOOO_15(
        2, 3,                                           # room for constraints, variables
        memoryview(array("d", [2.0, 3.0, -1.0])), 0.5,  # c, cfix
        memoryview(array("q", [0, 2, 4])), memoryview(array("q", [2, 4, 5])),
        memoryview(array("i", [0, 1, 0, 1, 1])), memoryview(array("d", [1.0, 1.0, 2.0, 1.0, 3.0])),
        memoryview(array("i", [BK_LOWER, BK_RANGED])),              # constraint bounds
        memoryview(array("d", [1.0, 2.0])), memoryview(array("d", [INF, 6.0])),
        memoryview(array("i", [BK_LOWER, BK_RANGED, BK_UPPER])),    # variable bounds
        memoryview(array("d", [0.0, 0.0, -INF])), memoryview(array("d", [INF, 3.0, 5.0]))))


def read_back(task):
    numcon, numvar = ok(task, "getnumcon", task.getnumcon__1()), ok(task, "getnumvar", task.getnumvar__1())
    print(f"{numcon} constraints, {numvar} variables")
    # In place: the caller sizes the arrays (count query first), the library fills them.
    for j in range(numvar):
        nz = ok(task, "getacolnumnz", task.getacolnumnz_i_2(j))
        sub, val = array("i", [0] * nz), array("d", [0.0] * nz)
        ok(task, "getacol", task.getacol_iOO_4(j, memoryview(sub), memoryview(val)))
        print(f"  column {j}: rows {list(sub)} values {list(val)}")
    for i in range(numcon):
        nz = ok(task, "getarownumnz", task.getarownumnz_i_2(i))
        sub, val = array("i", bytes(4 * nz)), array("d", bytes(8 * nz))  # any buffer of the right width
        ok(task, "getarow", task.getarow_iOO_4(i, memoryview(sub), memoryview(val)))
        print(f"  row {i}:    columns {list(sub)} values {list(val)}")
    # Allocating: the method resizes the bytearrays to fit.
    sub, val = bytearray(), bytearray()
    nz = ok(task, "getacol", task.getacol_iOO_2(1, sub, val))
    print(f"  column 1 again ({nz} entries, {len(sub) + len(val)} bytes): "
          f"rows {list(memoryview(sub).cast('i'))} values {list(memoryview(val).cast('d'))}")
    # A refused call returns its response code (no exception); its message goes to stream 2, so
    # the "[err]" line printed next is expected: the demo asks for a column that does not exist.
    print("  Asking for column 7, which does not exist (an [err] line follows on purpose):")
    print(f"  column 7: response code {task.getacolnumnz_i_2(7)[0]}")


def write_text(task):
    stream = io.BytesIO()  # anything with a write method
    ok(task, "writedatastream", task.writedatastream(DATA_FORMAT_TEXT, COMPRESS_NONE, stream))
    print("The problem in the library's text format:\n" + stream.getvalue().decode(), end="")


SOL_BAS = 1  # the basic solution, which the simplex optimizer gives
SOLSTA = {0: "unknown", 1: "optimal", 2: "primal feasible", 3: "dual feasible", 4: "primal and dual feasible",
          5: "primal infeasibility certificate", 6: "dual infeasibility certificate", 9: "integer optimal"}


def solve(task):
    task.remove_Stream(0)  # the optimizer log stays quiet here; examples/optimize.py shows it
    trm = ok(task, "optimizetrm", task.optimizetrm__1())
    print(f"optimizer finished, termination code {trm} ({'normal' if trm == 0 else 'see lib/include/quarn.h'})")
    # The whole basic solution in one call: statuses in the payload, vectors in the bytearrays.
    arrays = [bytearray() for _ in range(11)]
    prosta, solsta = ok(task, "getsolution", task.getsolution_iOOOOOOOOOOO_2(SOL_BAS, *arrays))
    skc, skx, skn, xc, xx, y, slc, suc, slx, sux, snx = arrays
    print(f"solution status: {SOLSTA.get(solsta, solsta)}")
    print(f"  x = {[round(v, 9) for v in memoryview(xx).cast('d')]}")
    print(f"  constraint activities = {[round(v, 9) for v in memoryview(xc).cast('d')]}")
    print(f"  duals y = {[round(v, 9) for v in memoryview(y).cast('d')]}")
    print(f"  objective = {ok(task, 'getprimalobj', task.getprimalobj_i_2(SOL_BAS))}"
          f" (dual objective {ok(task, 'getdualobj', task.getdualobj_i_2(SOL_BAS))})")
    ok(task, "solutionsummary", task.solutionsummary_i_2(STREAM_MSG))


if __name__ == "__main__":
    env = _qrn.Env()
    task = _qrn.Task(env)
    for step in (show_streams, state_problem, read_back, write_text, solve):
        step(task)
    task.dispose()
    env.dispose()
