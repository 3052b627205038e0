"""The installed stub package lets a type checker check a client of _qrn."""
import subprocess
import sys
import textwrap

import pytest

CLIENT = """
    import _qrn
    env = _qrn.Env()
    task = _qrn.Task(env)
    code, numcon = task.getnumcon__1()
    reveal_type(numcon)
    task.getacol_iOO_2(0, bytearray(), bytearray())
    task.getacol_iOO_2(0, bytearray())
    task.putcj_id_3(0, "x")
"""


def test_mypy_uses_the_stub_package(tmp_path):
    pytest.importorskip("mypy")
    client = tmp_path / "client.py"
    client.write_text(textwrap.dedent(CLIENT))
    proc = subprocess.run([sys.executable, "-m", "mypy", "--no-incremental", "--python-executable", sys.executable,
                           "--cache-dir", str(tmp_path / "cache"), str(client)],
                          capture_output=True, text=True, timeout=300, cwd=tmp_path)
    out = proc.stdout
    assert "Cannot find implementation or library stub" not in out, out
    assert 'Revealed type is "int | None"' in out or 'Revealed type is "Union[builtins.int, None]"' in out, out
    assert 'Too few arguments for "getacol_iOO_2" of "Task"' in out, out
    assert 'Argument 2 to "putcj_id_3" of "Task" has incompatible type "str"' in out, out
    assert proc.returncode == 1 and out.count("error:") == 2, out
