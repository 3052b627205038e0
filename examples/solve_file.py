"""Reads a problem file, solves it and writes its solution:

    python examples/solve_file.py model.mps.gz [solution.sol]

The format comes from the file name's extension (.mps .fmps .lp .opf .ptf
.jtask .json .task .cbf .qtx, optionally followed by .gz). The log, the
optimizer and solution summaries, and for an optimal basic solution the
sensitivity report (or, for an infeasible problem, the infeasibility report)
go to standard output. The solution is written to the second file name, or
beside the problem with the extension .sol.
"""
import sys

import _qrn

MSG = 1  # the library's message stream
SOL_ITR, SOL_BAS, SOL_ITG = 0, 1, 2
SOL_STA_OPTIMAL, SOL_STA_PRIM_INFEAS_CER = 1, 5


def check(task, what, result):
    code = result[0] if isinstance(result, tuple) else result
    if code != 0:
        _, last = task.getlasterror()
        sys.exit(f"{what} failed with code {code}: {last}")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    source = sys.argv[1]
    base = source[:-3] if source.endswith(".gz") else source
    target = sys.argv[2] if len(sys.argv) == 3 else base.rsplit(".", 1)[0] + ".sol"
    env = _qrn.Env()
    task = _qrn.Task(env)
    task.set_Stream(MSG, lambda text: print(text, end=""))
    check(task, "reading " + source, task.readdataautoformat_s_2(source))
    check(task, "the read summary", task.readsummary_i_2(MSG))
    code, trm = task.optimizetrm__1()
    check(task, "optimizing", code)
    print(f"termination code {trm}")
    check(task, "the optimizer summary", task.optimizersummary_i_2(MSG))
    check(task, "the solution summary", task.solutionsummary_i_2(MSG))
    for which in (SOL_ITG, SOL_BAS, SOL_ITR):
        code, defined = task.solutiondef_i_2(which)
        if code == 0 and defined:
            break
    else:
        sys.exit("the optimizer left no solution")
    _, solsta = task.getsolsta_i_2(which)
    if which == SOL_BAS and solsta == SOL_STA_OPTIMAL:
        check(task, "the sensitivity report", task.sensitivityreport_i_2(MSG))
    if solsta == SOL_STA_PRIM_INFEAS_CER:
        check(task, "the infeasibility report", task.infeasibilityreport_ii_3(MSG, which))
    check(task, "writing " + target, task.writesolution_is_3(which, target))
    print(f"wrote {target}")
    task.dispose()
    env.dispose()


if __name__ == "__main__":
    main()
