#!/usr/bin/env bash
# Side-by-side benchmark of dicapsule, cp and the peer DICOM tools; see bench/run_peers.py --help.
#   bench/run_peers.sh [--sizes 1M,512M,2G] [--runs 5] [--quick] [--scratch DIR] [--keep]
set -euo pipefail
exec /usr/bin/python3 "$(dirname "$0")/run_peers.py" "$@"
