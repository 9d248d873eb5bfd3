#!/usr/bin/env bash
# Sets up, builds and runs every test (engine tests and offscreen widget tests).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake --preset default
cmake --build --preset default
export QT_QPA_PLATFORM=offscreen
ctest --preset default -j 2
