"""Reads a problem file and writes it in another format, both chosen by the
file names' extensions (.mps .fmps .lp .opf .ptf .jtask .json .task .cbf .qtx,
optionally followed by .gz):

    python examples/convert.py model.mps.gz model.lp

Prints what was read and a short analysis of the problem (examples/solve_file.py
solves a problem file and writes its solution).
"""
import sys

import _qrn

MSG = 1  # the library's message stream


def check(task, what, result):
    code = result[0] if isinstance(result, tuple) else result
    if code != 0:
        _, last = task.getlasterror()
        sys.exit(f"{what} failed with code {code}: {last}")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    source, target = sys.argv[1:]
    env = _qrn.Env()
    task = _qrn.Task(env)
    task.set_Stream(MSG, lambda text: print(text, end=""))
    check(task, "reading " + source, task.readdataautoformat_s_2(source))
    check(task, "the read summary", task.readsummary_i_2(MSG))
    check(task, "the analysis", task.analyzeproblem_i_2(MSG))
    check(task, "writing " + target, task.writedata_s_2(target))
    print(f"wrote {target}")
    task.dispose()
    env.dispose()


if __name__ == "__main__":
    main()
