# Sets up the working tree (scripts/setup.sh), then runs examples/demo.py.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$QRN_ROOT"
exec "$QRN_PY" examples/demo.py
