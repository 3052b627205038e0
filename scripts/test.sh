# Sets up the working tree (scripts/setup.sh), then builds and runs the
# library's own C++ tests and the module's pytest suite. Exits non-zero when
# anything fails or when a runner finds no tests.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$QRN_ROOT"
install_extra test
# nginx for the scale-out test (tests/test_remote.py skips it when nginx is missing)
if ! command -v nginx >/dev/null && [[ ! -x /usr/sbin/nginx ]] && ((EUID == 0)) && command -v apt-get >/dev/null; then
  printf 'test: installing nginx for the scale-out test\n'
  QRN_DEBIAN_PACKAGES=(nginx)
  install_debian_packages || printf 'test: nginx could not be installed: the scale-out test is skipped\n'
fi

status=0
report() { printf 'test: %s\n' "$*"; }

# ---- library tests: their own build tree, only the test runner and the library
report "building the library tests (build/libtests)"
if logged cmake -S . -B build/libtests -G Ninja -DPython_EXECUTABLE="$QRN_PY" -DQRN_LIB_TESTS=ON &&
   logged cmake --build build/libtests --target quarn_lib_tests; then
  report "running the library tests"
  set +e
  out="$(build/libtests/lib/quarn_lib_tests 2>&1)"
  rc=$?
  set -e
  printf '%s\n' "$out"
  if ((rc != 0)); then
    status=1
  elif grep -qx '0 passed, 0 failed' <<<"$out"; then
    report "the library test runner found no tests"
    status=1
  fi
else
  status=1
fi

# ---- module tests, against the _qrn installed in .venv
report "running pytest"
set +e
"$QRN_PY" -m pytest -q tests
rc=$?
set -e
case $rc in
  0) ;;
  5) report "pytest found no tests"; status=1 ;;
  *) status=1 ;;
esac

if ((status == 0)); then report "all passed"; else report "FAILED"; fi
exit $status
