# Prepares a working tree: finds CPython 3.12, installs the Debian packages the
# build needs, makes the virtual environment .venv, and builds and installs the
# project into it. Re-runs are incremental (the build tree is build/wheel).
#
#   bash scripts/setup.sh          # just set up
#   source scripts/setup.sh        # set up, then use $QRN_PY (the venv's python)
#
# QRN_PYTHON=/path/to/python3.12 skips the search for an interpreter.

set -euo pipefail

QRN_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
QRN_VENV="$QRN_ROOT/.venv"
QRN_LOG="$QRN_ROOT/build/setup.log"

QRN_DEBIAN_PACKAGES=(g++ pkg-config coinor-libclp-dev coinor-libcbc-dev libopenblas-dev liblapacke-dev
                     libsuitesparse-dev nlohmann-json3-dev zlib1g-dev libcpp-httplib-dev)
QRN_PIP_TOOLS=("scikit-build-core>=0.8" "cmake>=3.18" ninja)

step() { printf 'setup: %s\n' "$*"; }
die() {
  printf 'setup: error: %s\n' "$*" >&2
  exit 1
}

# Runs a command with its output in the log; shows the end of the log if it fails.
logged() {
  if ! "$@" >>"$QRN_LOG" 2>&1; then
    tail -n 40 "$QRN_LOG" >&2
    printf 'error: %s failed (full output in %s)\n' "$*" "${QRN_LOG#"$QRN_ROOT"/}" >&2
    return 1
  fi
}

# True when $1 runs and is a 64-bit CPython 3.12 (pyenv's shim for a version
# that is not selected exits with an error, so it does not count).
is_python312() {
  "$1" -c 'import sys; sys.exit(not (sys.implementation.name == "cpython"
           and sys.version_info[:2] == (3, 12) and sys.maxsize > 2**32))' >/dev/null 2>&1
}

# The interpreter itself, not a shim or wrapper that starts it.
real_executable() { "$1" -c 'import sys; print(sys.executable)'; }

find_python312() {
  local candidate version
  if [[ -n "${QRN_PYTHON:-}" ]]; then
    is_python312 "$QRN_PYTHON" || die "QRN_PYTHON=$QRN_PYTHON is not a 64-bit CPython 3.12"
    real_executable "$QRN_PYTHON"
    return
  fi
  for candidate in python3.12 python3; do
    if command -v "$candidate" >/dev/null && is_python312 "$candidate"; then
      real_executable "$candidate"
      return
    fi
  done
  if command -v pyenv >/dev/null; then
    version="$(pyenv versions --bare 2>/dev/null | grep -E '^3\.12\.[0-9]+$' | sort -V | tail -n 1 || true)"
    if [[ -n "$version" ]]; then
      candidate="$(PYENV_VERSION="$version" pyenv which python3.12 2>/dev/null || true)"
      if [[ -n "$candidate" ]] && is_python312 "$candidate"; then
        real_executable "$candidate"
        return
      fi
    fi
  fi
  die "no CPython 3.12 found: install one (for example 'pyenv install 3.12') or set QRN_PYTHON"
}

install_debian_packages() {
  local missing=() pkg
  if ! command -v dpkg-query >/dev/null; then
    step "not a Debian system: make sure a C++17 compiler and ${QRN_DEBIAN_PACKAGES[*]:1} are installed"
    return
  fi
  for pkg in "${QRN_DEBIAN_PACKAGES[@]}"; do
    [[ "$(dpkg-query -W -f='${db:Status-Abbrev}' "$pkg" 2>/dev/null)" == ii* ]] || missing+=("$pkg")
  done
  if ((${#missing[@]} == 0)); then
    step "system packages present"
    return
  fi
  local sudo=()
  if ((EUID != 0)); then
    command -v sudo >/dev/null || die "missing packages ${missing[*]}: run as root or install them"
    sudo=(sudo)
  fi
  step "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  logged "${sudo[@]}" apt-get update -q
  logged "${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

make_venv() {
  local python="$1"
  # A venv whose interpreter is gone or is not 3.12 any more is made afresh.
  if [[ -x "$QRN_VENV/bin/python" ]] && ! is_python312 "$QRN_VENV/bin/python"; then
    step "replacing .venv (its interpreter is not a working 3.12)"
    rm -rf "$QRN_VENV"
  fi
  if [[ ! -x "$QRN_VENV/bin/python" ]]; then
    logged "$python" -m venv "$QRN_VENV"
    step "made .venv"
  else
    step "using .venv"
  fi
  QRN_PY="$QRN_VENV/bin/python"
  export PATH="$QRN_VENV/bin:$PATH"
}

install_tools() {
  if "$QRN_PY" -c 'import scikit_build_core, cmake, ninja' >/dev/null 2>&1; then
    step "build and test tools present"
    return
  fi
  step "installing build tools ${QRN_PIP_TOOLS[*]}"
  logged "$QRN_PY" -m pip install -q --upgrade pip
  logged "$QRN_PY" -m pip install -q "${QRN_PIP_TOOLS[@]}"
}

# The build tree persists in build/wheel, so CMake and ninja rebuild only what
# changed (a new or edited method description regenerates its methods).
install_project() {
  step "building and installing _qrn into .venv (build/wheel)"
  logged "$QRN_PY" -m pip install -v --no-build-isolation --no-deps --force-reinstall \
    -C build-dir="$QRN_ROOT/build/wheel" "$QRN_ROOT"
  local found
  found="$(cd / && "$QRN_PY" -c 'import importlib.util as u; print(u.find_spec("_qrn").origin)' 2>/dev/null)" ||
    die "_qrn was not installed (see ${QRN_LOG#"$QRN_ROOT"/})"
  step "installed ${found#"$QRN_VENV"/}"
}

# Installs the packages of an optional-dependencies group of pyproject.toml (the
# "test" group for scripts/test.sh); pip does nothing when they are present.
install_extra() {
  local reqs
  reqs="$("$QRN_PY" -c 'import sys, tomllib; print("\n".join(tomllib.load(open(sys.argv[1], "rb"))["project"]["optional-dependencies"][sys.argv[2]]))' "$QRN_ROOT/pyproject.toml" "$1")"
  step "making sure the $1 packages are installed: $(echo $reqs)"
  # shellcheck disable=SC2086
  logged "$QRN_PY" -m pip install -q $reqs
}

mkdir -p "$QRN_ROOT/build"
: >"$QRN_LOG"
QRN_BASE_PY="$(find_python312)"
step "python $("$QRN_BASE_PY" -c 'import platform; print(platform.python_version())') at $QRN_BASE_PY"
install_debian_packages
make_venv "$QRN_BASE_PY"
install_tools
install_project
export QRN_ROOT QRN_PY
