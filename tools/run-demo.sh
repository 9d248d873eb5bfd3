#!/usr/bin/env bash
# Sets up, builds and starts VELDRIX on the bundled demo recording.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake --preset default
cmake --build --preset default --target veldrix
exec ./build/default/app/veldrix examples/demo/demo_line_fault.cfg
