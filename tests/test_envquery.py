"""Environment queries: code descriptions, version, the banner on the
environment's stream, files linked to environment streams."""
import pytest

import _qrn
from conftest import raises

MSG = 1  # the environment's message stream


def texts(symname, desc):
    return bytes(symname).split(b"\0")[0].decode(), bytes(desc).split(b"\0")[0].decode()


def test_static_methods_need_no_instance():
    assert _qrn.Env.getversion__0() == (0, (10, 2, 0))
    sym, desc = bytearray(b"previous"), bytearray(5000)
    assert _qrn.Env.getcodedesc_iOO_1(1000, sym, desc) == (0, None)
    assert len(sym) == 1024 and len(desc) == 1024
    assert texts(sym, desc) == ("QRN_RES_ERR_NULL_ENV", "The environment handle is null.")
    s2, d2 = bytearray(), bytearray()
    assert _qrn.Env().getcodedesc_iOO_1(1000, s2, d2) == (0, None) and texts(s2, d2) == texts(sym, desc)
    assert _qrn.Env.getcodedesc_iOO_1(0, sym, desc) == (0, None) and texts(sym, desc)[0] == "QRN_RES_OK"
    assert _qrn.Env.getcodedesc_iOO_1(2203, sym, desc) == (0, None)
    assert texts(sym, desc)[0] == "QRN_RES_ERR_LA_NOT_POSDEF"


def test_unknown_code_and_bytearray_checks():
    sym, desc = bytearray(b"a"), bytearray(b"b")
    assert _qrn.Env.getcodedesc_iOO_1(-12345, sym, desc) == (2210, None)
    assert len(sym) == 1024  # resized before the call, as every text output
    with raises("Bytearray object for argument symname"):
        _qrn.Env.getcodedesc_iOO_1(0, None, bytearray())
    with raises("Bytearray object for argument str"):
        _qrn.Env.getcodedesc_iOO_1(0, bytearray(), memoryview(bytearray(1024)))

    class Sub(bytearray):
        pass

    assert _qrn.Env.getcodedesc_iOO_1(0, Sub(), Sub()) == (0, None)


def test_banner_reaches_the_message_stream(env):
    lines = []
    env.set_Stream(MSG, lines.append)
    assert env.echointro_i_2(0) == (0, None)
    short = "".join(lines)
    assert "quarn64_10_2" in short and "10.2.0" in short and "Build:" in short
    assert "OpenBLAS" not in short
    lines.clear()
    assert env.echointro_i_2(1) == (0, None)
    full = "".join(lines)
    for dep in ("OpenBLAS", "1 thread", "LAPACK", "CHOLMOD", "UMFPACK", "Clp", "Cbc", "CoinUtils", "zlib"):
        assert dep in full, dep


def test_env_stream_exception_is_swallowed(env):
    calls = []

    def broken(text):
        calls.append(text)
        raise RuntimeError("stream")

    env.set_Stream(MSG, broken)
    assert env.echointro_i_2(1) == (0, None)  # no exception comes out
    assert calls
    env.remove_Stream(MSG)
    assert env.echointro_i_2(0) == (0, None)


def test_linked_files_receive_a_copy(env, tmp_path):
    path = tmp_path / "msg.txt"
    lines = []
    env.set_Stream(MSG, lines.append)
    assert env.linkfiletoenvstream_isi_4(MSG, str(path), 0) == (0, None)
    env.echointro_i_2(0)
    first = path.read_text()
    assert first == "".join(lines) and "quarn64_10_2" in first  # the callable still gets the text
    assert env.linkfiletoenvstream_isi_4(MSG, str(path), 1) == (0, None)  # append
    env.echointro_i_2(0)
    assert path.read_text() == first * 2
    assert env.linkfiletoenvstream_isi_4(MSG, str(path), 0) == (0, None)  # truncate
    assert path.read_text() == ""
    assert env.linkfiletoenvstream_isi_4(MSG, "", 0) == (0, None)  # unlink
    env.echointro_i_2(0)
    assert path.read_text() == ""
    # failures: the error stream tells, the earlier link stays
    errors = []
    env.set_Stream(2, errors.append)
    env.linkfiletoenvstream_isi_4(MSG, str(path), 0)
    assert env.linkfiletoenvstream_isi_4(MSG, str(tmp_path / "no" / "dir.txt"), 0) == (1008, None)
    assert env.linkfiletoenvstream_isi_4(4, str(path), 0) == (1007, None)
    assert len(errors) == 2 and "dir.txt" in errors[0]
    env.echointro_i_2(0)
    assert "quarn64_10_2" in path.read_text()
    with pytest.raises(ValueError):
        env.linkfiletoenvstream_isi_4(MSG, "a\0b", 0)


def test_disposed_env(env):
    e = _qrn.Env()
    e.dispose()
    assert e.echointro_i_2(1) == (1000, None)
    assert e.linkfiletoenvstream_isi_4(0, "x", 0) == (1000, None)
    assert e.getversion__0() == (0, (10, 2, 0))
