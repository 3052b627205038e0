"""Parameters by identifier, by name and as text, string parameters read into
bytearrays, constants from their names, and information items."""
import re
from pathlib import Path

import pytest

HEADER = Path(__file__).resolve().parents[1] / "lib" / "include" / "quarn.h"


def header_constants():
    """Every QRN_ constant of the library header: enum members and response codes."""
    text = HEADER.read_text()
    found = {m[0]: int(m[1]) for m in re.findall(r"\b(QRN_\w+) = (-?\d+)", text)}
    found.update({m[0]: int(m[1]) for m in re.findall(r"X\((QRN_RES_\w+), (\d+),", text)})
    found.update({m[0]: int(m[1]) for m in re.findall(r"#define (QRN_\w+_COUNT) (\d+)", text)})
    return found


Q = header_constants()


def code(name):
    return Q["QRN_RES_" + name]


def par(task, name):
    """The identifier of a parameter, found by its name."""
    kind = {"D": task.isdouparname_s_2, "I": task.isintparname_s_2, "S": task.isstrparname_s_2}[name[4]]
    rc, ident = kind(name)
    assert rc == 0
    return ident


def test_parameters_by_identifier_and_by_name(task):
    tol, threads, algo = par(task, "QRN_DPAR_OPT_TOL"), par(task, "QRN_IPAR_THREADS"), par(task, "QRN_IPAR_ALGORITHM")
    assert (tol, threads) == (Q["QRN_DPAR_OPT_TOL"], Q["QRN_IPAR_THREADS"])
    assert task.getdouparam_i_2(tol) == (0, 1e-8)
    assert task.putdouparam_id_3(tol, 1e-6) == (0, None)
    assert task.getdouparam_i_2(tol) == (0, 1e-6)
    assert task.putnaintparam_si_3("QRN_IPAR_THREADS", 8) == (0, None)
    assert task.getintparam_i_2(threads) == (0, 8)

    # Refusals come back as codes and leave the value as it was.
    assert task.putdouparam_id_3(tol, 0.75) == (code("ERR_PARAM_VALUE"), None)
    assert task.putintparam_ii_3(algo, 77) == (code("ERR_PARAM_VALUE"), None)
    assert task.putnadouparam_sd_3("QRN_IPAR_THREADS", 1.0) == (code("ERR_PARAM_TYPE"), None)
    assert task.getdouparam_i_2(Q["QRN_DPAR_COUNT"]) == (code("ERR_PARAM_INDEX"), None)
    assert task.getdouparam_i_2(tol) == (0, 1e-6) and task.getintparam_i_2(threads) == (0, 8)

    assert task.getnumparam_i_2(Q["QRN_PAR_TYPE_INTEGER"]) == (0, Q["QRN_IPAR_COUNT"])


def test_parameters_as_text(task):
    assert task.putparam_ss_3("QRN_IPAR_PRESOLVE", "QRN_OFF") == (0, None)
    assert task.getintparam_i_2(par(task, "QRN_IPAR_PRESOLVE")) == (0, Q["QRN_OFF"])
    assert task.putparam_ss_3("QRN_DPAR_TIME_LIMIT", " 60.5 ") == (0, None)
    assert task.getdouparam_i_2(par(task, "QRN_DPAR_TIME_LIMIT")) == (0, 60.5)
    assert task.putparam_ss_3("QRN_DPAR_TIME_LIMIT", "sixty") == (code("ERR_PARAM_VALUE"), None)
    assert task.putparam_ss_3("QRN_NOT_A_PARAMETER", "1") == (code("ERR_PARAM_NAME"), None)
    with pytest.raises(ValueError):
        task.putparam_ss_3("QRN_SPAR_TEMP_DIR", "a\0b")  # the parser refuses a NUL


def test_string_parameter_into_bytearray(task):
    tag = par(task, "QRN_SPAR_REMOTE_TAG")
    out = bytearray(b"old contents")
    assert task.getstrparam_iO_2(tag, out) == (0, 0)
    assert out == b"\0"
    assert task.putstrparam_is_3(tag, "sch\u00f6n") == (0, None)
    assert task.getstrparamlen_i_2(tag) == (0, 6)
    assert task.getstrparam_iO_2(tag, out) == (0, 6)
    assert out == "sch\u00f6n".encode() + b"\0"

    class Sub(bytearray):
        pass

    assert task.getstrparam_iO_2(par(task, "QRN_SPAR_DEFAULT_EXTENSION"), Sub()) == (0, 3)
    # The type is tested before any call, so even for a bad identifier.
    with pytest.raises(TypeError, match="^Bytearray object for argument parvalue$"):
        task.getstrparam_iO_2(999, memoryview(bytearray(4)))
    kept = bytearray(b"kept")
    assert task.getstrparam_iO_2(999, kept) == (code("ERR_PARAM_INDEX"), None)
    assert kept == b"kept"


def test_constants_from_names(task):
    assert task.strtoconetype_s_2("QRN_CONE_RQUAD") == (0, Q["QRN_CONE_RQUAD"])
    assert task.strtosk_s_2("FIXED") == (0, Q["QRN_SK_FIXED"])
    assert task.strtosk_s_2("fixed") == (code("ERR_UNKNOWN_KEY"), None)


def test_information_items(task):
    assert task.getdouinf_i_2(Q["QRN_DINF_TIME_TOTAL"]) == (0, 0.0)
    assert task.getdouinf_i_2(Q["QRN_DINF_MIP_REL_GAP"]) == (0, -1.0)
    assert task.getintinf_i_2(Q["QRN_IINF_TERMINATION_CODE"]) == (0, -1)
    # 64-bit items come back from all 64 bits: -1 is neither 2**32-1 nor 2**64-1.
    assert task.getlintinf_i_2(Q["QRN_LIINF_OPT_START_USEC"]) == (0, -1)
    assert task.getlintinf_i_2(Q["QRN_LIINF_COUNT"] - 1) == (0, -1)
    for method, count in ((task.getdouinf_i_2, "QRN_DINF_COUNT"), (task.getintinf_i_2, "QRN_IINF_COUNT"),
                          (task.getlintinf_i_2, "QRN_LIINF_COUNT")):
        assert method(Q[count]) == (code("ERR_INF_INDEX"), None)
        assert method(-1) == (code("ERR_INF_INDEX"), None)
    # The counts are those of the information callback's lists.
    assert (Q["QRN_DINF_COUNT"], Q["QRN_IINF_COUNT"], Q["QRN_LIINF_COUNT"]) == (111, 117, 21)


def test_problem_type(task):
    assert task.getprobtype__1() == (0, Q["QRN_PROBTYPE_LINEAR"])
    task.appendvars_i_2(3)
    assert task.appendconeseq_idii_5(Q["QRN_CONE_QUAD"], 0.0, 2, 0) == (0, None)
    assert task.getprobtype__1() == (0, Q["QRN_PROBTYPE_CONIC"])
    assert task.putqobjij_iid_4(2, 2, 1.0) == (0, None)
    assert task.getprobtype__1() == (0, Q["QRN_PROBTYPE_MIXED"])
