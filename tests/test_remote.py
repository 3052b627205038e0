"""Remote optimization against real qrn-optserver processes on 127.0.0.1 (port 0, stopped by
PID): synchronous and asynchronous solves equal local ones, stopping, the access token,
malformed requests, network failures (refused, garbled, silent, killed mid-job), a clean
SIGTERM, and two servers behind nginx."""
import http.client
import http.server
import json
import os
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time
from array import array
from pathlib import Path

import pytest

import _qrn
from conftest import dv, iv, qv
from test_optimize import c, dinf, iinf, infeasible_lp, load, small_lp

ROOT = Path(__file__).resolve().parents[1]
SERVER = shutil.which("qrn-optserver", path=str(Path(sys.executable).parent)) or shutil.which("qrn-optserver")
pytestmark = pytest.mark.skipif(SERVER is None, reason="qrn-optserver is not installed (pip install .)")
INF = 1e30


class Server:
    """A qrn-optserver child process; stopped by its PID."""

    def __init__(self, *args):
        self.proc = subprocess.Popen([SERVER, "--port", "0", *args], stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, text=True)
        line = self.proc.stdout.readline()
        m = re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", line)
        if not m:
            self.proc.kill()
            raise AssertionError(f"no ready line: {line!r} {self.proc.stderr.read()}")
        self.port = int(m[1])
        self.addr = f"127.0.0.1:{self.port}"

    def stop(self, sig=signal.SIGTERM):
        if self.proc.poll() is None:
            os.kill(self.proc.pid, sig)
        rc = self.proc.wait(timeout=30)
        self.proc.stdout.close()
        self.stderr = self.proc.stderr.read()
        self.proc.stderr.close()
        return rc

    def request(self, method, path, body=None, headers=None):
        conn = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        conn.request(method, path, body=body, headers=headers or {})
        r = conn.getresponse()
        data = r.read()
        conn.close()
        return r.status, data


@pytest.fixture(scope="module")
def server():
    s = Server("--workers", "2", "--server-id", "t1", "--max-body", "1000000")
    yield s
    assert s.stop() == 0


def err(task):
    return task.getlasterror()


def solutions(task, tmp_path, name):
    path = tmp_path / name
    assert task.writejsonsol_s_2(str(path)) == (0, None)
    return json.loads(path.read_text())


def knapsack(task, n=12, seed=1):
    rnd = random.Random(seed)
    w = [rnd.randint(5, 40) for _ in range(n)]
    v = [rnd.randint(5, 60) for _ in range(n)]
    load(task, [w], [-x for x in v], [("UPPER", -INF, sum(w) // 2)], [("RANGED", 0, 1)] * n)
    task.putvartypelist_OO_3(iv(*range(n)), iv(*[c("VAR_TYPE_INTEGER")] * n))
    return task


def market_split(task, m=4, seed=7):
    """Cornuejols-Dawande market split: tiny, and far too hard to finish in a test."""
    n = 10 * (m - 1)
    rnd = random.Random(seed)
    rows = [[rnd.randint(0, 99) for _ in range(n)] for _ in range(m)]
    big = [r + [0] * (2 * m) for r in rows]
    for i in range(m):
        big[i][n + 2 * i] = 1
        big[i][n + 2 * i + 1] = -1
    cons = [("FIXED", sum(r) // 2, sum(r) // 2) for r in rows]
    load(task, big, [0] * n + [1] * (2 * m), cons, [("RANGED", 0, 1)] * n + [("LOWER", 0, INF)] * (2 * m))
    task.putvartypelist_OO_3(iv(*range(n)), iv(*[c("VAR_TYPE_INTEGER")] * n))
    task.putdouparam_id_3(c("DPAR_TIME_LIMIT"), 60.0)
    return task


def wait_done(task, addr, token, access=""):
    for _ in range(2000):
        code, (avail, resp, trm) = task.asyncpoll_sss_4(addr, access, token)
        assert code == 0
        if avail:
            return resp, trm
        time.sleep(0.01)
    raise AssertionError("the job never ended")


# ---- solves ------------------------------------------------------------------------

@pytest.mark.parametrize("kind", ["lp", "max", "ipm", "infeasible", "mip", "refused"])
def test_remote_solves_equal_local_ones(server, env, tmp_path, kind):
    def make():
        t = _qrn.Task(env)
        if kind in ("lp", "ipm", "refused"):
            small_lp(t)
        elif kind == "max":
            small_lp(t, maximize=True)
        elif kind == "infeasible":
            infeasible_lp(t)
        else:
            knapsack(t)
        if kind == "ipm":
            t.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_IPM"))
        if kind == "refused":  # simplex on a quadratic objective: the run cannot be made
            t.putqobj_OOO_4(iv(0), iv(0), dv(1.0))
            t.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_PRIMAL_SIMPLEX"))
        return t

    local, sync, asyn = make(), make(), make()
    want = local.optimizetrm__1()
    if kind == "refused":
        assert want[0] == c("RES_ERR_OPT_COMBINATION")
        assert sync.optimizermt_ss_3(server.addr, "") == want
        assert "server could not run the job" in err(sync)[1] and "interior-point" in err(sync)[1]
        tok = bytearray()
        assert asyn.asyncoptimize_ssO_3(server.addr, "", tok) == (0, None)
        token = tok[:tok.index(0)].decode()
        assert wait_done(asyn, server.addr, token) == (want[0], 0)
        assert asyn.asyncgetresult_sss_4(server.addr, "", token) == (0, (1, want[0], 0))
        assert asyn.solutiondef_i_2(c("SOL_BAS")) == (0, 0)
        return
    assert want[0] == 0
    assert sync.optimizermt_ss_3(server.addr, "") == want
    tok = bytearray(b"x" * 100)
    assert asyn.asyncoptimize_ssO_3("http://" + server.addr + "/", "", tok) == (0, None)
    assert len(tok) == 65
    token = tok[:tok.index(0)].decode()
    assert re.fullmatch(r"t1-[0-9a-f]{32}", token)
    assert wait_done(asyn, server.addr, token) == (0, want[1])
    assert asyn.asyncgetresult_sss_4(server.addr, "", token) == (0, (1, 0, want[1]))
    expect = solutions(local, tmp_path, "local.json")
    assert solutions(sync, tmp_path, "sync.json") == expect
    assert solutions(asyn, tmp_path, "async.json") == expect
    for t in (sync, asyn):
        assert iinf(t, "REMOTE_SOLVES") == 1 and iinf(t, "OPT_CALLS") == 1
        assert iinf(t, "TERMINATION_CODE") == want[1]
        assert iinf(t, "ALGORITHM_USED") == iinf(local, "ALGORITHM_USED")
        assert t.getlintinf_i_2(c("LIINF_REMOTE_BYTES_SENT"))[1] > 100
    # the result was dropped once stored
    assert asyn.asyncgetresult_sss_4(server.addr, "", token)[0] == c("RES_ERR_REMOTE_JOB_UNKNOWN")
    for t in (local, sync, asyn):
        t.dispose()


def test_log_callback_and_optserverhost(server, task):
    small_lp(task)
    log, codes = [], []
    task.set_Stream(0, log.append)
    task.set_Progress(lambda code: codes.append(code) or False)
    assert task.optimizermt_ss_3(server.addr, "") == (0, 0)
    text = "".join(log)
    assert "Optimizer terminated" in text and text.count("Optimizer terminated") == 1
    assert codes[0] == c("CALLBACK_BEGIN") and codes[-1] == c("CALLBACK_END")
    assert dinf(task, "BASIC_PRIMAL_OBJ") == pytest.approx(-11)
    assert dinf(task, "TIME_REMOTE") > 0 and iinf(task, "REMOTE_ATTEMPTS") >= 3
    # putoptserverhost: optimizetrm runs remotely until the host is emptied
    assert task.putoptserverhost_s_2("http://" + server.addr) == (0, None)
    assert task.optimizetrm__1() == (0, 0)
    assert iinf(task, "REMOTE_SOLVES") == 2 and iinf(task, "OPT_CALLS") == 2
    assert task.putoptserverhost_s_2("") == (0, None)
    assert task.optimizetrm__1() == (0, 0)
    assert iinf(task, "REMOTE_SOLVES") == 0 and iinf(task, "OPT_CALLS") == 3
    assert task.putoptserverhost_s_2("no-port")[0] == c("RES_ERR_REMOTE_ADDRESS")


def test_stop_by_token_and_by_callback(server, env):
    t = market_split(_qrn.Task(env))
    tok = bytearray()
    assert t.asyncoptimize_ssO_3(server.addr, "", tok)[0] == 0
    token = tok[:tok.index(0)].decode()
    assert t.asyncgetresult_sss_4(server.addr, "", token) == (0, (0, 0, 0))  # still running
    time.sleep(0.3)
    assert t.asyncstop_sss_4(server.addr, "", token) == (0, None)
    assert wait_done(t, server.addr, token) == (0, c("RES_TRM_USER_CALLBACK"))
    assert t.asyncgetresult_sss_4(server.addr, "", token) == (0, (1, 0, c("RES_TRM_USER_CALLBACK")))
    # the progress callback stops the wait and the remote job
    calls = []
    t.set_Progress(lambda code: calls.append(code) or len(calls) > 3)
    assert t.optimizermt_ss_3(server.addr, "") == (0, c("RES_TRM_USER_CALLBACK"))
    assert calls[:2] == [c("CALLBACK_BEGIN"), c("CALLBACK_ITERATION")]
    # an exception in the callable comes out of the method; the job is stopped
    t.set_Progress(lambda code: 1 / 0)
    with pytest.raises(ZeroDivisionError):
        t.optimizermt_ss_3(server.addr, "")
    status, body = server.request("GET", "/v1/health")
    assert status == 200
    for _ in range(500):
        if json.loads(server.request("GET", "/v1/health")[1])["running"] == 0:
            break
        time.sleep(0.01)
    else:
        raise AssertionError("the stopped job still runs")
    t.dispose()


def test_access_token(tmp_path, env):
    (tmp_path / "token").write_text("  s3cret-Token \n")
    s = Server("--token-file", str(tmp_path / "token"))
    try:
        t = small_lp(_qrn.Task(env))
        for bad in ("", "wrong"):
            code, _ = t.optimizermt_ss_3(s.addr, bad)
            assert code == c("RES_ERR_REMOTE_AUTH")
            assert "access token" in err(t)[1]
        assert t.optimizermt_ss_3(s.addr, "s3cret-Token") == (0, 0)
        assert t.putoptserverhost_s_2(f"http://s3cret-Token@{s.addr}") == (0, None)
        assert t.optimizetrm__1() == (0, 0) and iinf(t, "REMOTE_SOLVES") == 2
        assert s.request("GET", "/v1/jobs/x")[0] == 401
        assert s.request("GET", "/v1/health")[0] == 200
        t.dispose()
    finally:
        assert s.stop() == 0


def test_malformed_requests_get_clear_4xx(server, env, tmp_path):
    t = small_lp(_qrn.Task(env))
    t.writetask_s_2(str(tmp_path / "a.task"))
    good = (tmp_path / "a.task").read_bytes()
    cases = [
        ("POST", "/v1/jobs", b"", 400, "empty"),
        ("POST", "/v1/jobs", b"garbage" * 100, 400, "not a valid task file"),
        ("POST", "/v1/jobs", good[:len(good) // 2], 400, "ends early"),
        ("POST", "/v1/jobs", good[:40] + b"\xff" * 8 + good[48:], 400, "not a valid task file"),
        ("POST", "/v1/jobs", b"\0" * 1_500_000, 413, "max-body"),
        ("GET", "/v1/jobs/nonsense", None, 404, "no such resource"),
        ("GET", "/v1/jobs/t1-" + "0" * 32, None, 404, "no job"),
        ("GET", "/v1/jobs/zz-" + "0" * 32, None, 404, "load balancer"),
        ("GET", "/v1/jobs/t1-" + "0" * 32 + "?wait=abc", None, 400, "wait"),
        ("GET", "/etc/passwd", None, 404, "no such resource"),
    ]
    for method, path, body, status, words in cases:
        got, data = server.request(method, path, body, {"Content-Type": "application/octet-stream"})
        assert got == status, (path, data)
        assert words in json.loads(data)["error"], (path, data)
    # a valid file with a hostile parameter: the file path is cleared on the server
    t.putstrparam_is_3(c("SPAR_LOG_FILE"), str(tmp_path / "should-not-exist.log"))
    assert t.optimizermt_ss_3(server.addr, "") == (0, 0)
    assert not (tmp_path / "should-not-exist.log").exists()
    # a headers-only request that never sends its body
    sock = socket.create_connection(("127.0.0.1", server.port))
    sock.sendall(b"POST /v1/jobs HTTP/1.1\r\nHost: x\r\nContent-Length: 999999999999\r\n\r\n")
    sock.settimeout(15)
    assert b" 413 " in sock.recv(4096)
    sock.close()
    # the library's side of the same refusals
    big = _qrn.Task(env)
    n = 40000
    load(big, [[1] * n], [1] * n, [("UPPER", -INF, 1)], [("LOWER", 0, INF)] * n)
    assert big.optimizermt_ss_3(server.addr, "")[0] == c("RES_ERR_REMOTE_TOO_LARGE")
    assert t.asyncpoll_sss_4(server.addr, "", "not a token")[0] == c("RES_ERR_REMOTE_TOKEN")
    assert t.asyncstop_sss_4(server.addr, "", "t1-" + "a" * 32)[0] == c("RES_ERR_REMOTE_JOB_UNKNOWN")
    for addr in ("nohost", "ftp://127.0.0.1:1", "127.0.0.1:99999", "host name:1", ""):
        assert t.optimizermt_ss_3(addr, "")[0] == c("RES_ERR_REMOTE_ADDRESS"), addr
    assert server.request("GET", "/v1/health")[0] == 200
    t.dispose()
    big.dispose()


# ---- network failures --------------------------------------------------------------

class FakeServer:
    """Answers every request with `reply` (status, headers, body), or never when reply is None."""

    def __init__(self, reply):
        self.sock = socket.socket()
        self.sock.bind(("127.0.0.1", 0))
        self.sock.listen(16)
        self.addr = "127.0.0.1:%d" % self.sock.getsockname()[1]
        self.reply = reply
        self.held = []
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                conn, _ = self.sock.accept()
            except OSError:
                return
            self.held.append(conn)
            if self.reply is None:
                continue
            conn.settimeout(5)
            data = b""
            while b"\r\n\r\n" not in data:
                data += conn.recv(65536)
            head, _, rest = data.partition(b"\r\n\r\n")
            m = re.search(rb"Content-Length: (\d+)", head, re.I)
            need = int(m[1]) if m else 0
            while len(rest) < need:
                rest += conn.recv(65536)
            status, headers, body = self.reply
            conn.sendall(b"HTTP/1.1 %d X\r\nContent-Length: %d\r\n%s\r\n" % (status, len(body), headers) + body)
            conn.close()

    def close(self):
        self.sock.close()
        for conn in self.held:
            conn.close()


def test_network_failures_have_their_own_codes(env):
    t = small_lp(_qrn.Task(env))
    t.putdouparam_id_3(c("DPAR_REMOTE_TIMEOUT"), 0.5)
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    closed = "127.0.0.1:%d" % s.getsockname()[1]
    s.close()
    assert t.optimizermt_ss_3(closed, "")[0] == c("RES_ERR_REMOTE_CONNECT")
    assert "connection refused" in err(t)[1] and iinf(t, "REMOTE_SOLVES") == 0
    fakes = [
        (FakeServer(None), "RES_ERR_REMOTE_TIMEOUT"),
        (FakeServer((202, b"Content-Type: application/json\r\n", b"{not json")), "RES_ERR_REMOTE_PROTOCOL"),
        (FakeServer((202, b"", b'{"token": "../../etc"}')), "RES_ERR_REMOTE_PROTOCOL"),
        (FakeServer((404, b"", b"<html>nginx</html>")), "RES_ERR_REMOTE_PROTOCOL"),
        (FakeServer((503, b"X-Qrn-Server: x\r\n", b'{"error": "full"}')), "RES_ERR_REMOTE_BUSY"),
        (FakeServer((500, b"", b"")), "RES_ERR_REMOTE_SERVER"),
    ]
    for fake, code in fakes:
        assert t.optimizermt_ss_3(fake.addr, "")[0] == c(code), (code, err(t))
        fake.close()
    garbled = FakeServer((200, b"", b"QRNRSLT\0\1\0\0\0" + b"\xff" * 40))
    assert t.asyncgetresult_sss_4(garbled.addr, "", "t1-" + "0" * 32)[0] == c("RES_ERR_REMOTE_PROTOCOL")
    assert "garbled" in err(t)[1]
    garbled.close()
    assert iinf(t, "REMOTE_SOLVES") == 0 and t.solutiondef_i_2(c("SOL_BAS")) == (0, 0)
    t.dispose()


def test_truncated_and_corrupted_results_are_refused(server, env):
    t = small_lp(_qrn.Task(env))
    tok = bytearray()
    assert t.asyncoptimize_ssO_3(server.addr, "", tok) == (0, None)
    token = tok[:tok.index(0)].decode()
    wait_done(t, server.addr, token)
    status, good = server.request("GET", f"/v1/jobs/{token}/result")
    assert status == 200
    fake = FakeServer((200, b"", good))
    u = small_lp(_qrn.Task(env))
    assert u.asyncgetresult_sss_4(fake.addr, "", token) == (0, (1, 0, 0))
    assert dinf(u, "BASIC_PRIMAL_OBJ") == pytest.approx(-11)
    other = load(_qrn.Task(env), [[1, 1]], [1, 1], [("UPPER", -INF, 1)], [("LOWER", 0, INF)] * 2)
    assert other.asyncgetresult_sss_4(fake.addr, "", token)[0] == c("RES_ERR_SOL_SIZE")
    for n in sorted(set(range(0, len(good), 23)) | {len(good) - 1}):
        fake.reply = (200, b"", good[:n])
        assert u.asyncgetresult_sss_4(fake.addr, "", token)[0] == c("RES_ERR_REMOTE_PROTOCOL"), n
    rnd = random.Random(5)
    allowed = {0, c("RES_ERR_REMOTE_PROTOCOL"), c("RES_ERR_SOL_SIZE")}
    for _ in range(150):
        bad = bytearray(good)
        for _ in range(rnd.randint(1, 3)):
            bad[rnd.randrange(8, len(bad))] = rnd.choice([0, 0xff, rnd.randrange(256)])
        fake.reply = (200, b"", bytes(bad))
        assert u.asyncgetresult_sss_4(fake.addr, "", token)[0] in allowed
    fake.close()
    for x in (t, u, other):
        x.dispose()


def test_server_killed_mid_job(env):
    s = Server("--workers", "1")
    t = market_split(_qrn.Task(env))
    out = {}
    th = threading.Thread(target=lambda: out.setdefault("r", t.optimizermt_ss_3(s.addr, "")))
    th.start()
    time.sleep(0.5)
    s.stop(signal.SIGKILL)
    th.join(timeout=30)
    assert not th.is_alive()
    assert out["r"][0] == c("RES_ERR_REMOTE_LOST"), err(t)
    assert "went away" in err(t)[1]
    t.dispose()


def test_sigterm_stops_running_jobs_and_exits_cleanly(env):
    s = Server("--workers", "1")
    t = market_split(_qrn.Task(env))
    tok = bytearray()
    assert t.asyncoptimize_ssO_3(s.addr, "", tok)[0] == 0
    assert t.asyncoptimize_ssO_3(s.addr, "", tok)[0] == 0  # a queued one too
    for _ in range(500):
        if json.loads(s.request("GET", "/v1/health")[1])["running"] == 1:
            break
        time.sleep(0.01)
    assert s.stop(signal.SIGTERM) == 0
    assert "stopped" in s.stderr
    assert t.asyncpoll_sss_4(s.addr, "", tok[:tok.index(0)].decode())[0] == c("RES_ERR_REMOTE_LOST")
    t.dispose()


# ---- scale-out ---------------------------------------------------------------------

def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def test_two_servers_behind_nginx(tmp_path, env):
    nginx = shutil.which("nginx") or ("/usr/sbin/nginx" if os.access("/usr/sbin/nginx", os.X_OK) else None)
    if nginx is None:
        pytest.skip("nginx is not installed (apt-get install nginx; scripts/test.sh does so as root)")
    servers = [Server("--workers", "2", "--server-id", sid) for sid in ("s1", "s2")]
    front = free_port()
    conf = (ROOT / "examples" / "remote" / "nginx.conf").read_text()
    conf = conf.replace("127.0.0.1:8471", servers[0].addr).replace("127.0.0.1:8472", servers[1].addr)
    conf = conf.replace("127.0.0.1:8470", f"127.0.0.1:{front}")
    if os.geteuid() == 0:
        conf = "user root;\n" + conf
    (tmp_path / "tmp").mkdir()
    (tmp_path / "nginx.conf").write_text(conf)
    proc = subprocess.Popen([nginx, "-p", str(tmp_path), "-c", str(tmp_path / "nginx.conf")],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    try:
        for _ in range(500):
            try:
                socket.create_connection(("127.0.0.1", front), timeout=1).close()
                break
            except OSError:
                assert proc.poll() is None, proc.stderr.read().decode()
                time.sleep(0.01)
        addr = f"127.0.0.1:{front}"
        tasks, tokens = [], []
        for k in range(40):  # min -3x - 2y + z, x + y + z <= b, x + 3y <= 9, 0 <= x <= 3
            t = _qrn.Task(env)
            b = 1 + k % 5
            load(t, [[1, 1, 1], [1, 3, 0]], [-3, -2, 1], [("UPPER", -INF, b), ("UPPER", -INF, 9)],
                 [("RANGED", 0, 3), ("LOWER", 0, INF), ("LOWER", 0, INF)])
            tok = bytearray()
            assert t.asyncoptimize_ssO_3(addr, "", tok) == (0, None), err(t)
            tasks.append((t, b))
            tokens.append(tok[:tok.index(0)].decode())
        assert {tk[:2] for tk in tokens} == {"s1", "s2"}
        for (t, _), token in zip(tasks, tokens):
            assert wait_done(t, addr, token) == (0, 0)
            assert t.asyncgetresult_sss_4(addr, "", token) == (0, (1, 0, 0)), err(t)
        for t, b in tasks:
            want = -3 * min(b, 3) - 2 * min(max(b - 3, 0), 2)  # x first, then y
            assert dinf(t, "BASIC_PRIMAL_OBJ") == pytest.approx(want)
            t.dispose()
    finally:
        proc.terminate()
        proc.wait(timeout=10)
        for s in servers:
            assert s.stop() == 0
