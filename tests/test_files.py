"""Files, strings and reports through the generated methods (the library
parses and writes; these tests check the wrapper side and a few round trips)."""
import pytest

import _qrn
from conftest import dv, iv, sized

READ_SYNTAX, READ_EOF, READ_SECTION = 1900, 1901, 1905
FILE_OPEN, STREAM = 1008, 1007
SOL_BAS = 1

LP = """\\ task: tiny
maximize
 obj: 3 x + 2 y
subject to
 c1: x + y <= 4
 c2: 1 <= x + 3 y <= 6
bounds
 x <= 3
general
 y
end
"""


def snapshot(task):
    """Sizes, bounds and matrix of a task, as plain lists."""
    m = task.getnumcon__1()[1]
    n = task.getnumvar__1()[1]
    out = [m, n]
    for i in range(m):
        out.append(task.getconbound_i_2(i))
    for j in range(n):
        out.append(task.getvarbound_i_2(j))
        out.append(task.getcj_i_2(j))
    return out


def test_lp_string_and_every_file_format(task, env, tmp_path):
    assert task.readlpstring_s_2(LP) == (0, None)
    assert task.getnumcon__1() == (0, 2) and task.getnumvar__1() == (0, 2)
    assert task.getnumintvar__1() == (0, 1)
    want = snapshot(task)
    for ext in ["mps", "fmps", "lp", "opf", "ptf", "jtask", "task", "qtx", "mps.gz", "task.gz"]:
        name = str(tmp_path / f"p.{ext}")
        assert task.writedata_s_2(name) == (0, None), ext
        other = _qrn.Task(env)
        assert other.readdataautoformat_s_2(name) == (0, None), ext
        assert snapshot(other) == want, ext
        other.dispose()
    name = str(tmp_path / "saved.bin")
    assert task.writetask_s_2(name) == (0, None)
    other = _qrn.Task(env)
    assert other.readtask_s_2(name) == (0, None)
    assert snapshot(other) == want
    # The two selectors of readdataformat: format 4 (LP), compression 0.
    assert other.readdataformat_sii_4(str(tmp_path / "p.lp"), 4, 0) == (0, None)
    assert other.readdataformat_sii_4(str(tmp_path / "p.lp"), 99, 0)[0] != 0
    other.dispose()


def test_strings_fail_safely(task):
    sized(task, 1, 2)
    before = snapshot(task)
    assert task.readlpstring_s_2("") == (READ_SECTION, None)
    assert task.readopfstring_s_2("opf 1\nvariables") == (READ_EOF, None)
    assert task.readptfstring_s_2("ptf one") [0] != 0
    assert task.readjsonstring_s_2("{") == (READ_EOF, None)
    assert snapshot(task) == before
    msg = task.getlasterror()
    assert "<string>:1:" in str(msg)
    with pytest.raises(ValueError):
        task.readlpstring_s_2("min\0imize")
    with pytest.raises(TypeError):
        task.readlpstring_s_2(None)


def test_json_and_opf_strings_round_trip(task, env):
    assert task.readlpstring_s_2(LP) == (0, None)
    out = []

    class Sink:
        def write(self, view):
            out.append(bytes(view))

    for fmt, reader in [(7, "readjsonstring_s_2"), (5, "readopfstring_s_2"), (6, "readptfstring_s_2")]:
        out.clear()
        assert task.writedatastream(fmt, 0, Sink()) == 0
        other = _qrn.Task(env)
        assert getattr(other, reader)(b"".join(out).decode()) == (0, None)
        assert snapshot(other) == snapshot(task)
        other.dispose()


def test_parameter_and_solution_files(task, tmp_path):
    assert task.putintparam_ii_3(0, 3) == (0, None)
    name = str(tmp_path / "p.par")
    assert task.writeparamfile_s_2(name) == (0, None)
    assert task.putintparam_ii_3(0, 1) == (0, None)
    assert task.readparamfile_s_2(name) == (0, None)
    assert task.getintparam_i_2(0) == (0, 3)
    assert task.readparamfile_s_2(str(tmp_path / "missing.par")) == (FILE_OPEN, None)
    assert task.writesolution_is_3(SOL_BAS, str(tmp_path / "s.sol"))[0] != 0  # nothing to write yet
    sized(task, 1, 1)
    (tmp_path / "s.sol").write_text(
        "sol 1\nsolution basic\nprosta PRIM_AND_DUAL_FEAS\nsolsta OPTIMAL\n"
        "constraints 1\ncon 0 \"\" BS 0 0 0 0\nvariables 1\nvar 0 \"\" LL 0 0 0 0\ncones 0\nend\n")
    assert task.readsolution_is_3(SOL_BAS, str(tmp_path / "s.sol")) == (0, None)
    for method, name in [("writesolution_is_3", "w.sol"), ("writejsonsol_s_2", "w.json"),
                         ("writesolutionfile_s_2", "all.sol"), ("writebsolution_si_3", "w.bas")]:
        args = {"writesolution_is_3": (SOL_BAS, str(tmp_path / name)),
                "writebsolution_si_3": (str(tmp_path / name), 0)}.get(method, (str(tmp_path / name),))
        assert getattr(task, method)(*args) == (0, None), method
    assert task.readjsonsol_s_2(str(tmp_path / "w.json")) == (0, None)
    assert task.readsolutionfile_s_2(str(tmp_path / "all.sol")) == (0, None)
    assert task.readbsolution_si_3(str(tmp_path / "w.bas"), 0) == (0, None)


def test_reports_reach_the_stream(task, tmp_path):
    assert task.readlpstring_s_2(LP) == (0, None)
    lines = []
    task.set_Stream(1, lines.append)
    for call in [lambda: task.readsummary_i_2(1), lambda: task.analyzeproblem_i_2(1),
                 lambda: task.solutionsummary_i_2(1), lambda: task.onesolutionsummary_ii_3(1, 0),
                 lambda: task.optimizersummary_i_2(1)]:
        assert call() == (0, None)
    text = "".join(lines)
    assert "Read summary" in text and "Problem analysis" in text and "Optimizer summary" in text
    assert task.analyzeproblem_i_2(7) == (STREAM, None)

    def boom(text):
        raise RuntimeError("stream failed")

    task.set_Stream(1, boom)
    with pytest.raises(RuntimeError, match="stream failed"):
        task.optimizersummary_i_2(1)


def test_linked_file_and_memory(task, tmp_path):
    log = tmp_path / "msg.log"
    assert task.linkfiletotaskstream_isi_4(1, str(log), 0) == (0, None)
    assert task.analyzeproblem_i_2(1) == (0, None)
    assert task.linkfiletotaskstream_isi_4(1, "", 0) == (0, None)
    assert "Problem analysis" in log.read_text()
    assert task.linkfiletotaskstream_isi_4(5, str(log), 0) == (STREAM, None)
    rc, (inuse, peak) = task.getmemusagetask__1()
    assert rc == 0 and 0 < inuse <= peak
    assert task.checkmemtask_si_3("test.py", 1) == (0, None)
    task.dispose()
    rc, payload = task.getmemusagetask__1()
    assert rc != 0 and payload is None
