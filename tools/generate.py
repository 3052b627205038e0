"""Turns the method descriptions under methods/ into C++ and a type stub.

A description file holds one table per library function:

    [getacol]                                  # wraps QRN_getacol
    methods = ["getacol_iOO_4", "getacol_iOO_2"]
    args = ["j: i", "nzj: ret i32", "subj: out i32 [nz]", "valj: out f64 [nz]"]
    queries = ["nz: i32 = getacolnumnz(j) each"]

`args` lists the library function's parameters after the handle, in order:

    NAME: i | L | d | s          scalar input (the method's format letter)
    NAME: ret T                  scalar output, part of the payload (T: i32 i64 f64)
    NAME: size T EXPR            a number the method computes and passes
    NAME: in T [EXPR]            input view (T: i32 i64 f64 u8); optional required length
    NAME: inout T [EXPR]         input view that the library updates: as `in`, but
                                 a read-only view is refused
    NAME: enum [EXPR]            enum array (4-byte codes); a required length makes it mandatory
    NAME: optenum [EXPR]         enum array with a required length that may be None
    NAME: out T [EXPR]           output array: a view in the in-place variant,
                                 a bytearray in the allocating one
    NAME: inbuf T [EXPR]         input array: a view in the in-place variant, a
                                 bytearray resized to EXPR elements in the other
    NAME: outenum [EXPR]         output enum array
    NAME: inbuf T [EXPR]         input array: a view of length EXPR (or None) in the first
                                 variant, a bytearray resized to EXPR elements (keeping its
                                 leading bytes) in the second
    NAME: text [EXPR]            text output (always a bytearray)
    NAME: strlist                string list, passed as two views (offsets, bytes)
    NAME: tasks                  list of Task objects

EXPR is a C expression over scalar inputs, query results, size values and
len(VIEW); `group(A,B,...)` names a length group (views in message order) and
`extent(PTRB,PTRE)` the reach of a pointer pair into an index/value array,
`span(PTR,NUM)` the reach of ranges given by start and count (NUM of 4- or
8-byte integers), and `sum(VIEW)` the sum of the positive entries of a view of
8-byte integers (negative counts are the library's to refuse; leaving them out
keeps every prefix the library may use within the sum). A length written
extent(...) or span(...) is a lower bound ("at least"); any other is exact.
A query `VAR: T = FUNC(ARGS) [each]` is made just before the first argument
that needs VAR (before every one with `each`); `?T` in ARGS stands for an
output that is discarded and `@` for the position of VAR (last if absent).

Other keys: `static = true` (no handle), `handwritten = true` (the family's
.cpp file defines the method; only its declaration and table entry are made),
and `slice = "VAR: T = FUNC()"` for a function with `first`/`last` slice
arguments and outputs sized by the slice: the allocating variant asks FUNC for
the number of items before it grows any bytearray, and a slice that cannot lie
inside 0..VAR goes to the library with no output arrays, so that it is refused
with the library's own response code without costing memory. A list of such
queries bounds the slice by the largest (for a reader whose kind of item is an
argument). Every allocating slice reader must have it. `probe = true` does the
same for an output sized by a caller's number (a slice size, say): the
allocating variant always asks the library first with no output arrays, and
a refusal returns before any bytearray grows. A handwritten
method's lengths may name its scalar outputs.
"""

from __future__ import annotations

import argparse
import re
import sys
import tomllib
from dataclasses import dataclass, field
from pathlib import Path

CTYPE = {"i32": "qrn_int32", "i64": "qrn_int64", "f64": "qrn_real", "u8": "char"}
WIDTH = {"i32": 4, "i64": 8, "f64": 8, "u8": 1}
SCALAR = {"i": ("int", "qrn_int32", "int"), "L": ("long long", "qrn_int64", "int"),
          "d": ("double", "qrn_real", "float"), "s": ("const char *", "const char *", "str")}
PAYLOAD = {"i32": ("i", "int"), "i64": ("L", "int"), "f64": ("d", "float"), "task": ("N", "Task")}
ARRAYS = {"in", "inout", "enum", "optenum", "inbuf", "out", "outenum", "text", "strlist", "tasks"}
BUFFERS = ("in", "inout", "enum", "optenum", "inbuf", "out", "outenum", "text")  # one Arr each


class DescriptionError(Exception):
    pass


@dataclass
class Param:
    name: str
    kind: str            # i L d s ret size in inout enum optenum inbuf out outenum text strlist tasks
    type: str = ""       # element or value type
    expr: str = ""       # required length or size expression


@dataclass
class Query:
    var: str
    type: str
    func: str
    args: list[str]
    each: bool


@dataclass
class Function:
    name: str
    family: str
    owner: str           # "Task" or "Env"
    params: list[Param]
    queries: dict[str, Query]
    methods: list[str]
    static: bool = False
    handwritten: bool = False
    slice: list[Query] = field(default_factory=list)
    probe: bool = False
    groups: list[tuple[str, list[str]]] = field(default_factory=list)  # (size var, views)


PARAM_RE = re.compile(r"^(\w+)\s*:\s*(\w+)(?:\s+(\w+))?\s*(?:\[(.+)\]|(.+))?$")
QUERY_RE = re.compile(r"^(\w+)\s*:\s*(\w+)\s*=\s*(\w+)\((.*)\)\s*(each)?$")


def parse_param(text: str, where: str) -> Param:
    text = text.strip()
    head, _, rest = text.partition(":")
    name = head.strip()
    words = rest.split(None, 1)
    if not name.isidentifier() or not words:
        raise DescriptionError(f"{where}: cannot read argument {text!r}")
    kind, tail = words[0], (words[1].strip() if len(words) > 1 else "")
    p = Param(name, kind)
    if kind in SCALAR:
        if tail:
            raise DescriptionError(f"{where}: {name}: scalar takes nothing more")
    elif kind == "ret":
        p.type = tail
        if tail not in PAYLOAD:
            raise DescriptionError(f"{where}: {name}: unknown output type {tail!r}")
    elif kind == "size":
        p.type, _, p.expr = tail.partition(" ")
        p.expr = p.expr.strip()
        if p.type not in ("i32", "i64") or not p.expr:
            raise DescriptionError(f"{where}: {name}: size needs i32|i64 and an expression")
    elif kind in ("in", "inout", "out", "inbuf"):
        t, _, length = tail.partition(" ")
        p.type = t
        if t not in WIDTH:
            raise DescriptionError(f"{where}: {name}: unknown element type {t!r}")
        p.expr = unbracket(length, where, name)
        if kind in ("out", "inbuf") and not p.expr:
            raise DescriptionError(f"{where}: {name}: an output needs its length")
    elif kind in ("enum", "optenum", "outenum", "text"):
        p.type = "i32" if kind != "text" else "u8"
        p.expr = unbracket(tail, where, name)
        if kind != "enum" and not p.expr:
            raise DescriptionError(f"{where}: {name}: {kind} needs its length")
    elif kind in ("strlist", "tasks"):
        if tail:
            raise DescriptionError(f"{where}: {name}: {kind} takes nothing more")
    else:
        raise DescriptionError(f"{where}: {name}: unknown kind {kind!r}")
    return p


def unbracket(text: str, where: str, name: str) -> str:
    text = text.strip()
    if not text:
        return ""
    if not (text.startswith("[") and text.endswith("]")):
        raise DescriptionError(f"{where}: {name}: length must be written [EXPR]")
    return text[1:-1].strip()


def parse_query(text: str, where: str) -> Query:
    m = QUERY_RE.match(text.strip())
    if not m:
        raise DescriptionError(f"{where}: cannot read query {text!r}")
    var, type_, func, args, each = m.groups()
    if type_ not in ("i32", "i64"):
        raise DescriptionError(f"{where}: query {var}: type must be i32 or i64")
    return Query(var, type_, func, [a.strip() for a in args.split(",") if a.strip()], bool(each))


def load(path: Path, owner: str) -> list[Function]:
    data = tomllib.loads(path.read_text())
    family = path.stem
    out = []
    for name, d in data.items():
        where = f"{path.name}:{name}"
        unknown = set(d) - {"methods", "args", "queries", "static", "handwritten", "slice", "probe"}
        if unknown:
            raise DescriptionError(f"{where}: unknown keys {sorted(unknown)}")
        params = [parse_param(a, where) for a in d.get("args", [])]
        queries = {q.var: q for q in (parse_query(t, where) for t in d.get("queries", []))}
        fn = Function(name, family, owner, params, queries, list(d["methods"]),
                      d.get("static", False), d.get("handwritten", False),
                      [parse_query(q, where) for q in ([d["slice"]] if isinstance(d.get("slice"), str)
                                                       else d.get("slice", []))],
                      d.get("probe", False))
        check(fn, where)
        out.append(fn)
    return out


# ---- derived facts ---------------------------------------------------------------

def fmt_letters(fn: Function) -> str:
    letters = ""
    for p in fn.params:
        if p.kind in SCALAR:
            letters += p.kind
        elif p.kind == "strlist":
            letters += "OO"
        elif p.kind in ARRAYS:
            letters += "O"
    return letters


def has_outputs(fn: Function) -> bool:
    """True when the function has an in-place and an allocating variant."""
    return any(p.kind in ("out", "outenum", "inbuf") for p in fn.params)


def variants(fn: Function) -> dict[str, bool]:
    """Method name -> whether it is the allocating variant."""
    letters = fmt_letters(fn)
    base = (0 if fn.static else 1) + len(letters) - sum(p.kind == "strlist" for p in fn.params)
    texts = sum(p.kind == "text" for p in fn.params)
    outs = sum(p.kind in ("out", "outenum", "inbuf") for p in fn.params)
    names = {}
    if has_outputs(fn):
        names[f"{fn.name}_{letters}_{base - texts}"] = False
        names[f"{fn.name}_{letters}_{base - texts - outs}"] = True
    else:
        names[f"{fn.name}_{letters}_{base - texts}"] = True
    return names


IDENT = re.compile(r"[A-Za-z_]\w*")


def expr_names(expr: str) -> set[str]:
    return set(IDENT.findall(expr)) - {"len", "group", "extent", "span", "sum"}


def check(fn: Function, where: str) -> None:
    derived = variants(fn)
    for m in fn.methods:
        if m not in derived:
            raise DescriptionError(f"{where}: method {m} does not match its description "
                                   f"(derived: {', '.join(derived)})")
    if len(set(fn.methods)) != len(fn.methods) or not fn.methods:
        raise DescriptionError(f"{where}: methods must be listed once each")
    names = [p.name for p in fn.params] + list(fn.queries)
    # `task` names the list of a batch method of Env; a Task method's handle is f.task().
    reserved = ({"f", "env", "args", "self"} | ({"task"} if fn.owner == "Task" else set())) & set(names)
    if reserved:
        raise DescriptionError(f"{where}: reserved names used: {sorted(reserved)}")
    dup = {n for n in names if names.count(n) > 1}
    if dup:
        raise DescriptionError(f"{where}: names used twice: {sorted(dup)}")
    views = {p.name for p in fn.params if p.kind in ARRAYS}
    known = {p.name for p in fn.params if p.kind in SCALAR or p.kind == "size"} | set(fn.queries) | views
    if fn.handwritten:
        known |= {p.name for p in fn.params if p.kind == "ret"}
    for p in fn.params:
        for g in re.findall(r"group\(([^)]*)\)", p.expr):
            members = [v.strip() for v in g.split(",")]
            if p.kind != "size" or any(v not in views for v in members):
                raise DescriptionError(f"{where}: {p.name}: bad group({g})")
            fn.groups.append((p.name, members))
        for n in expr_names(p.expr):
            if n not in known:
                raise DescriptionError(f"{where}: {p.name}: unknown name {n!r} in [{p.expr}]")
    sliced = any(p.kind in ("out", "outenum") and re.search(r"\blast\s*-\s*first\b", p.expr) for p in fn.params)
    if sliced and has_outputs(fn) and not fn.slice:
        raise DescriptionError(f"{where}: an allocating slice reader needs `slice = \"n: i32 = getnumX()\"`")
    if fn.slice and (not sliced or any(q.args for q in fn.slice)):
        raise DescriptionError(f"{where}: `slice` needs outputs sized by last - first and queries without arguments")
    for q in fn.queries.values():
        for a in q.args:
            if a not in ("@",) and not a.startswith("?") and a not in known:
                raise DescriptionError(f"{where}: query {q.var}: unknown argument {a!r}")


# ---- C++ emission ----------------------------------------------------------------

class Emitter:
    def __init__(self, fn: Function, method: str, alloc: bool):
        self.fn, self.method, self.alloc = fn, method, alloc
        self.lines: list[str] = []
        self.fired: set[str] = set()
        self.sizes_late: set[str] = set()
        self.discards = 0

    def w(self, line: str = "") -> None:
        self.lines.append("  " + line if line else "")

    # An expression with len() and extent() made concrete, computed in
    # Py_ssize_t so that no 32-bit arithmetic can overflow.
    def cexpr(self, expr: str) -> str:
        expr = re.sub(r"len\((\w+)\)", r"\1.len", expr)
        expr = re.sub(r"extent\((\w+)\s*,\s*(\w+)\)", r"reach_\1_\2", expr)
        expr = re.sub(r"span\((\w+)\s*,\s*(\w+)\)", r"span_\1_\2", expr)
        expr = re.sub(r"sum\((\w+)\)", r"sum_\1", expr)
        scalars = {p.name for p in self.fn.params if p.kind in ("i", "L")}
        return IDENT.sub(lambda m: f"Py_ssize_t({m[0]})" if m[0] in scalars else m[0], expr)

    def query_vars(self, expr: str) -> list[str]:
        return [n for n in sorted(expr_names(expr)) if n in self.fn.queries] + \
            [v for n in sorted(expr_names(expr)) if n in self.sizes_late
             for v in self.query_vars(self.param(n).expr)]

    def param(self, name: str) -> Param:
        return next(p for p in self.fn.params if p.name == name)

    def fire(self, expr: str) -> None:
        for var in dict.fromkeys(self.query_vars(expr)):
            q = self.fn.queries[var]
            if var in self.fired and not q.each:
                continue
            if var not in self.fired:
                self.w(f"{CTYPE[q.type]} {var} = 0;")
            self.fired.add(var)
            args, placed = [], False
            for a in q.args:
                if a == "@":
                    args.append(f"&{var}")
                    placed = True
                elif a.startswith("?"):
                    args.append(f"&discard{self.discards}")
                    self.w(f"{CTYPE[a[1:]]} discard{self.discards};")
                    self.discards += 1
                else:
                    args.append(a)
            if not placed:
                args.append(f"&{var}")
            call = ", ".join(([] if self.fn.static else [self.handle()]) + args)
            self.w(f"if (!f.call([&] {{ return QRN_{q.func}({call}); }})) return f.stop();")

    def handle(self) -> str:
        # Read by the frame for each library call: a callable that disposed the
        # object during an earlier call leaves a null handle for the next one.
        return "f.task()" if self.fn.owner == "Task" else "f.env()"

    def emit(self) -> str:
        fn = self.fn
        sig_args = "args" if fmt_letters(fn) else ""
        self.lines.append(f"PyObject *{fn.owner}_{self.method}(PyObject *{'' if fn.static else 'self'}, "
                          f"PyObject *{sig_args}) {{")
        self.parse()
        self.w("Frame f;" if fn.static else "Frame f(self);")
        self.arrays()
        self.main_call()
        self.lines.append("}")
        return "\n".join(self.lines)

    def parse(self) -> None:
        fn, decls, targets = self.fn, [], []
        for p in fn.params:
            if p.kind in SCALAR:
                decls.append(f"{SCALAR[p.kind][0]} {p.name}{' = nullptr' if p.kind == 's' else ''};")
                targets.append(f"&{p.name}")
            elif p.kind == "strlist":
                decls.append(f"PyObject *o_{p.name}, *o_{p.name}_bytes;")
                targets += [f"&o_{p.name}", f"&o_{p.name}_bytes"]
            elif p.kind in ARRAYS:
                decls.append(f"PyObject *o_{p.name};")
                targets.append(f"&o_{p.name}")
        for d in decls:
            self.w(d)
        letters = fmt_letters(fn)
        if letters:
            self.w(f'if (!PyArg_ParseTuple(args, "{letters}", {", ".join(targets)})) return nullptr;')

    def is_view(self, p: Param) -> bool:
        return p.kind in ("in", "inout", "enum", "optenum") or (p.kind in ("out", "outenum", "inbuf") and not self.alloc)

    def is_input_view(self, p: Param) -> bool:
        return p.kind in ("in", "inout", "enum", "optenum") or (p.kind == "inbuf" and not self.alloc)

    def is_bytearray(self, p: Param) -> bool:
        return p.kind == "text" or (p.kind in ("out", "outenum", "inbuf") and self.alloc)

    def arrays(self) -> None:
        fn = self.fn
        arrs = [p for p in fn.params if p.kind in BUFFERS]
        if arrs:
            self.w(f"Arr {', '.join(p.name for p in arrs)};")
        for p in fn.params:
            if p.kind == "strlist":
                self.w(f"StrList {p.name};")
            elif p.kind == "tasks":
                self.w(f"TaskList {p.name};")
        # 1. kind and element width of every view, in argument order
        for p in fn.params:
            if self.is_view(p):
                out = ", true" if p.kind in ("out", "outenum", "inout") else ""
                self.w(f"if (!f.view(o_{p.name}, {WIDTH[p.type]}, QRN_ARG({p.name}), {p.name}{out})) return nullptr;")
            elif p.kind == "strlist":
                self.w(f"if (!f.strlist(o_{p.name}, o_{p.name}_bytes, QRN_ARG({p.name}), {p.name})) "
                       "return nullptr;")
            elif p.kind == "tasks":
                self.w(f'if (!f.tasklist(o_{p.name}, "Expected a list object for argument {p.name}", '
                       f'"Expected a list of Tasks for argument {p.name}", {p.name})) return nullptr;')
        # 2. lengths of the inputs: groups, then required lengths in argument order
        for var, members in fn.groups:
            msg = f"Mismatching lengths of arguments {','.join(members)}"
            views = ", ".join(f"&{m}" for m in members)
            self.w(f'const Py_ssize_t {var}_n = f.group({{{views}}}, "{msg}");')
        early_sizes = []
        for p in fn.params:
            if p.kind == "size":
                if self.query_vars(p.expr):
                    self.sizes_late.add(p.name)
                else:
                    early_sizes.append(p)
        for p in early_sizes:
            self.size_value(p)
        reaches = dict.fromkeys(re.findall(r"extent\((\w+)\s*,\s*(\w+)\)", " ".join(p.expr for p in fn.params)))
        for a, b in reaches:
            self.w(f"const Py_ssize_t reach_{a}_{b} = Frame::extent({a}, {b});")
        exprs = " ".join(p.expr for p in fn.params)
        for a, b in dict.fromkeys(re.findall(r"span\((\w+)\s*,\s*(\w+)\)", exprs)):
            self.w(f"const Py_ssize_t span_{a}_{b} = Frame::span({a}, {b}, {WIDTH[self.param(b).type]});")
        for a in dict.fromkeys(re.findall(r"sum\((\w+)\)", exprs)):
            self.w(f"const Py_ssize_t sum_{a} = Frame::sum({a});")
        for p in fn.params:
            if self.is_input_view(p) and p.expr and not self.query_vars(p.expr):
                self.length_check(p)
        if fn.groups:
            self.w("if (!f.checked()) return nullptr;")
        # 3. texts and enum bytearrays are type-tested before any count query
        for p in fn.params:
            if self.is_bytearray(p) and p.kind in ("text", "outenum"):
                self.w(f"if (!f.bytearray(o_{p.name}, QRN_ARG({p.name}))) return nullptr;")
        # 3a. a slice the library will refuse must not grow any bytearray first
        if (fn.slice or fn.probe) and self.alloc:
            # the outputs that the frame reaches before any count query keep
            # their place: their type is tested first
            for p in fn.params:
                if not self.is_bytearray(p):
                    continue
                if self.query_vars(p.expr):
                    break
                if p.kind not in ("text", "outenum"):
                    self.w(f"if (!f.bytearray(o_{p.name}, QRN_ARG({p.name}))) return nullptr;")
            probe = f"if (!f.call([&] {{ return {self.library_call(nulls=True)}; }})) return f.stop();"
            if fn.probe:
                self.w(probe)
            else:
                for q in fn.slice:
                    self.w(f"{CTYPE[q.type]} {q.var} = 0;")
                    self.w(f"if (!f.call([&] {{ return QRN_{q.func}({self.handle()}, &{q.var}); }})) return f.stop();")
                bound = fn.slice[0].var
                for q in fn.slice[1:]:
                    bound = f"std::max<long long>({bound}, {q.var})"
                self.w(f"if (!Frame::inside(first, last, {bound})) {{")
                self.w("  " + probe)
                self.w("}")
        # 4. count queries, outputs and query-sized inputs, in argument order
        for p in fn.params:
            if p.kind == "size" and p.name in self.sizes_late:
                self.fire(p.expr)
                self.size_value(p)
            elif self.is_bytearray(p):
                self.fire(p.expr)
                bytewise = ", true" if p.kind in ("text", "outenum") else ""
                self.w(f"if (!f.alloc(o_{p.name}, {self.cexpr(p.expr)}, {WIDTH[p.type]}, QRN_ARG({p.name}), "
                       f"{p.name}{bytewise})) return nullptr;")
            elif p.kind in ("out", "outenum") or (self.is_input_view(p) and self.query_vars(p.expr)):
                self.fire(p.expr)
                self.length_check(p)

    def length_check(self, p: Param) -> None:
        need = self.cexpr(p.expr)
        if re.fullmatch(r"(extent|span)\(.*\)", p.expr.strip()):
            self.w(f'if (!f.at_least({p.name}, {need}, "Array is too short in argument {p.name}")) return nullptr;')
        elif p.kind in ("enum", "outenum"):
            self.w(f"if (!f.required_enum({p.name}, {need}, QRN_ARG({p.name}))) return nullptr;")
        elif p.kind == "optenum":
            self.w(f"if ({p.name}.given() && !f.required_enum({p.name}, {need}, QRN_ARG({p.name}))) "
                   "return nullptr;")
        else:
            self.w(f'if (!f.length({p.name}, {need}, "Array is too short in argument {p.name}")) return nullptr;')

    def size_value(self, p: Param) -> None:
        expr = re.sub(r"group\([^)]*\)", f"{p.name}_n", p.expr)
        self.w(f"const {CTYPE[p.type]} {p.name} = static_cast<{CTYPE[p.type]}>({self.cexpr(expr)});")

    def library_call(self, nulls: bool = False) -> str:
        """The wrapped function's call; with nulls, no output arrays and no scalar outputs."""
        fn = self.fn
        args = [] if fn.static else [self.handle()]
        for p in fn.params:
            if nulls and p.kind in ("out", "outenum", "text", "ret"):
                args.append("nullptr")
            elif nulls and p.name in self.sizes_late:
                args.append("0")
            elif p.kind in BUFFERS:
                args.append(f"{p.name}.as<{'char' if p.type == 'u8' else CTYPE[p.type]}>()")
            elif p.kind == "ret":
                args.append(f"&{p.name}")
            elif p.kind == "strlist":
                args.append(f"{p.name}.ptrs")
            elif p.kind == "tasks":
                args.append(f"{p.name}.handles")
            else:
                args.append(p.name)
        return f"QRN_{fn.name}({', '.join(args)})"

    def main_call(self) -> None:
        fn = self.fn
        rets = [p for p in fn.params if p.kind == "ret"]
        for p in rets:
            if p.type == "task":
                self.w(f"qrn_task_t {p.name} = nullptr;")
            else:
                self.w(f"{CTYPE[p.type]} {p.name} = 0;")
        self.w(f"if (!f.call([&] {{ return {self.library_call()}; }})) return f.stop();")
        if not rets:
            self.w("return Frame::none();")
            return
        letters = "".join(PAYLOAD[p.type][0] for p in rets)
        if len(rets) > 1:
            letters = f"({letters})"
        values = []
        for p in rets:
            if p.type == "task":
                self.w(f"PyObject *{p.name}_obj = wrap_task({p.name});")
                self.w(f"if ({p.name}_obj == nullptr) return nullptr;")
                values.append(f"{p.name}_obj")
            elif p.type == "i64":
                values.append(f"static_cast<long long>({p.name})")
            else:
                values.append(p.name)
        self.w(f'return Py_BuildValue("i{letters}", 0, {", ".join(values)});')


def emit_family(fns: list[Function], family: str, owner: str) -> str:
    out = [f"// Generated from methods/{owner.lower()}/{family}.toml; do not edit.",
           '#include "frame.hpp"', '#include "objects.hpp"', "", "namespace qrn {", ""]
    for fn in fns:
        if fn.handwritten:
            continue
        for method, alloc in variants(fn).items():
            if method in fn.methods:
                out.append(Emitter(fn, method, alloc).emit())
                out.append("")
    out.append("}  // namespace qrn")
    return "\n".join(out) + "\n"


HAND_TASK = [("set_Stream", "VARARGS", "set_Stream(whichstream,func)"),
             ("set_Progress", "VARARGS", "set_Progress(func)"),
             ("set_InfoCallback", "VARARGS", "set_InfoCallback(func)"),
             ("remove_Stream", "VARARGS", "remove_Stream(whichstream)"),
             ("remove_Progress", "NOARGS", "remove_Progress()"),
             ("remove_InfoCallback", "NOARGS", "remove_InfoCallback()"),
             ("writedatastream", "VARARGS", "writedatastream(dformat,compress,stream)"),
             ("getlasterror", "NOARGS", "getlasterror(lastmsg)"),
             ("dispose", "NOARGS", "dispose()")]
HAND_ENV_FIRST = [("set_Stream", "VARARGS", "set_Stream(whichstream,func)"),
                  ("remove_Stream", "VARARGS", "remove_Stream(whichstream)"),
                  ("enablegarcolenv", "NOARGS", "enablegarcolenv()")]
HAND_ENV_LAST = [("dispose", "NOARGS", "dispose()")]


def ordered_methods(fn: Function) -> list[str]:
    return [m for m in variants(fn) if m in fn.methods]


def entry(owner: str, method: str, flags: str, doc: str) -> str:
    return f'    {{"{method}", (PyCFunction){owner}_{method}, {flags}, "{doc}"}},'


def emit_tables(task_fns: list[Function], env_fns: list[Function]) -> str:
    out = ["// Generated method tables; do not edit.", '#include "objects.hpp"', "", "namespace qrn {", ""]
    decls = []
    for fn in task_fns + env_fns:
        for m in ordered_methods(fn):
            decls.append(f"PyObject *{fn.owner}_{m}(PyObject *, PyObject *);")
    out += decls + [""]

    def gen_entries(fns):
        rows = []
        for fn in fns:
            for m in ordered_methods(fn):
                flags = "METH_VARARGS" if fmt_letters(fn) else "METH_NOARGS"
                if fn.static:
                    flags += " | METH_STATIC"
                rows.append(entry(fn.owner, m, flags, ""))
        return rows

    out.append("PyMethodDef task_methods[] = {")
    out += gen_entries(task_fns)
    out += [entry("Task", n, f"METH_{f}", d) for n, f, d in HAND_TASK]
    out += ["    {nullptr, nullptr, 0, nullptr},", "};", ""]
    out.append("PyMethodDef env_methods[] = {")
    out += [entry("Env", n, f"METH_{f}", d) for n, f, d in HAND_ENV_FIRST]
    out += gen_entries(env_fns)
    out += [entry("Env", n, f"METH_{f}", d) for n, f, d in HAND_ENV_LAST]
    out += ["    {nullptr, nullptr, 0, nullptr},", "};", "", "}  // namespace qrn"]
    return "\n".join(out) + "\n"


# ---- type stub -------------------------------------------------------------------

ELEMENT = {"i32": "int32", "i64": "int64", "f64": "float64", "u8": "bytes"}


def stub_arrays(fn: Function, alloc: bool) -> list[str]:
    """One line per array argument: element type, length, and whether the library reads or writes it."""
    lines = []
    for p in fn.params:
        if p.kind not in ARRAYS:
            continue
        length = f"{p.expr} elements" if p.expr else ""
        if p.kind == "strlist":
            lines.append(f"{p.name}, {p.name}_text: offsets (int64) into NUL-terminated UTF-8 texts, read")
        elif p.kind == "tasks":
            lines.append(f"{p.name}: list of Task, read")
        elif p.kind == "text":
            lines.append(f"{p.name}: UTF-8 text, NUL-terminated, written into the resized bytearray")
        elif p.kind in ("out", "outenum"):
            kind = "enum codes (int32)" if p.kind == "outenum" else ELEMENT[p.type]
            where = "written into the bytearray, resized to" if alloc else "written, view of exactly"
            lines.append(f"{p.name}: {kind}, {where} {length or 'the reported count'}")
        else:
            kind = "enum codes (int32)" if p.kind in ("enum", "optenum") else ELEMENT[p.type]
            how = "read and updated" if p.kind == "inout" else "read"
            lines.append(f"{p.name}: {kind}, {how}" + (f", {length}" if length else ""))
    return lines


def stub_signature(fn: Function, alloc: bool) -> str:
    args = []
    for p in fn.params:
        if p.kind in SCALAR:
            args.append(f"{p.name}: {SCALAR[p.kind][2]}")
        elif p.kind == "strlist":
            args += [f"{p.name}: memoryview | None", f"{p.name}_text: memoryview | None"]
        elif p.kind == "tasks":
            args.append(f"{p.name}: list[Task] | None")
        elif p.kind == "text" or (alloc and p.kind in ("out", "outenum", "inbuf")):
            args.append(f"{p.name}: bytearray")
        elif p.kind in ARRAYS:
            args.append(f"{p.name}: memoryview | None")
    rets = [PAYLOAD[p.type][1] for p in fn.params if p.kind == "ret"]
    payload = "None" if not rets else (rets[0] if len(rets) == 1 else f"tuple[{', '.join(rets)}]")
    if payload != "None":
        payload += " | None"
    params = ", ".join((["self"] if not fn.static else []) + args + (["/"] if args else []))
    head = f"def {{name}}({params}) -> tuple[int, {payload}]:"
    doc = stub_arrays(fn, alloc)
    if not doc:
        return head + " ..."
    body = "\n        ".join([f"QRN_{fn.name}. Arrays:"] + doc)
    return head + f'\n        """{body}\n        """'


def emit_stub(task_fns: list[Function], env_fns: list[Function]) -> str:
    out = ['"""Low level QUARN optimizer API"""', "from typing import Any, Callable", "",
           "class Env:", '    """Env objects"""',
           "    def __init__(self, dbgfile: str = ..., globalenv: bool = ...) -> None: ...",
           "    def set_Stream(self, whichstream: int, func: Callable[[str], Any], /) -> None: ...",
           "    def remove_Stream(self, whichstream: int, /) -> None: ...",
           "    def enablegarcolenv(self) -> int: ...",
           "    def dispose(self) -> None: ..."]

    def methods(fns):
        rows = []
        for fn in fns:
            for m, alloc in variants(fn).items():
                if m in fn.methods:
                    if fn.static:
                        rows.append("    @staticmethod")
                    rows.append("    " + stub_signature(fn, alloc).replace("{name}", m))
        return rows

    out += methods(env_fns)
    out += ["", "class Task:", '    """Task objects"""',
            "    def __init__(self, env: Env | None = ..., numcon: int = ..., numvar: int = ...,"
            " other: 'Task' = ...) -> None: ...",
            "    def set_Stream(self, whichstream: int, func: Callable[[str], Any], /) -> None: ...",
            "    def set_Progress(self, func: Callable[[int], Any], /) -> None: ...",
            "    def set_InfoCallback(self, func: Callable[[int, list[float], list[int], list[int]], Any], /)"
            " -> None: ...",
            "    def remove_Stream(self, whichstream: int, /) -> None: ...",
            "    def remove_Progress(self) -> None: ...",
            "    def remove_InfoCallback(self) -> None: ...",
            "    def writedatastream(self, dformat: int, compress: int, stream: Any, /) -> int: ...",
            "    def getlasterror(self) -> tuple[int, str]: ...",
            "    def dispose(self) -> None: ..."]
    out += methods(task_fns)
    return "\n".join(out) + "\n"


# ---- driver ----------------------------------------------------------------------

def load_all(root: Path) -> tuple[list[Function], list[Function]]:
    task = [f for p in sorted((root / "task").glob("*.toml")) for f in load(p, "Task")]
    env = [f for p in sorted((root / "env").glob("*.toml")) for f in load(p, "Env")]
    seen: dict[str, str] = {}
    for fn in task + env:
        for m in fn.methods:
            key = f"{fn.owner}.{m}"
            if key in seen:
                raise DescriptionError(f"{key} is described twice ({seen[key]}, {fn.family})")
            seen[key] = fn.family
    return task, env


def write_if_changed(path: Path, text: str) -> None:
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


def main(argv: list[str]) -> int:
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("methods", type=Path, help="the methods/ directory")
    ap.add_argument("out", type=Path, help="directory for the generated files")
    ap.add_argument("--list", action="store_true", help="print the generated .cpp files and stop")
    a = ap.parse_args(argv)
    try:
        task, env = load_all(a.methods)
    except (DescriptionError, tomllib.TOMLDecodeError, KeyError) as e:
        print(f"generate.py: {e}", file=sys.stderr)
        return 1
    families = [("Task", p.stem) for p in sorted((a.methods / "task").glob("*.toml"))] + \
               [("Env", p.stem) for p in sorted((a.methods / "env").glob("*.toml"))]
    files = [f"{owner.lower()}_{fam}.cpp" for owner, fam in families] + ["tables.cpp"]
    if a.list:
        print(";".join(files))
        return 0
    a.out.mkdir(parents=True, exist_ok=True)
    for owner, fam in families:
        fns = [f for f in (task if owner == "Task" else env) if f.family == fam]
        write_if_changed(a.out / f"{owner.lower()}_{fam}.cpp", emit_family(fns, fam, owner))
    write_if_changed(a.out / "tables.cpp", emit_tables(task, env))
    write_if_changed(a.out / "_qrn.pyi", emit_stub(task, env))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
