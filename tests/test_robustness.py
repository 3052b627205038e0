"""Every method, discovered from the types, called with bad kinds of every argument in a child
process (tests/robustness.py): no crash, no hang, no SystemError, every exception with a message."""
import subprocess
import sys
from pathlib import Path

SCRIPT = Path(__file__).with_name("robustness.py")


def test_every_method_survives_bad_arguments(tmp_path):
    # in a scratch directory: methods that name files (stream files, for one) may create them
    proc = subprocess.run([sys.executable, str(SCRIPT), "--full"], capture_output=True, text=True, timeout=300,
                          cwd=tmp_path)
    assert proc.returncode == 0, f"child ended with {proc.returncode}:\n{proc.stdout[-3000:]}{proc.stderr[-3000:]}"
    assert proc.stdout.rstrip().endswith("done: 0 findings"), proc.stdout[-5000:]


def test_discovery_finds_both_types():
    sys.path.insert(0, str(SCRIPT.parent))
    import robustness

    import _qrn
    names = [n for n, _ in robustness.generated(_qrn.Task)]
    assert "getacol_iOO_4" in names and "getacol_iOO_2" in names and len(names) > 100
