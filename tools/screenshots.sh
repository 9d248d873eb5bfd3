#!/usr/bin/env bash
# Makes the pictures of the analysis forms in the user guide (docs/images/) from the demo
# recording, on a virtual X display. Needs a built tree (cmake --build --preset default) and
# xvfb-run.
set -euo pipefail
cd "$(dirname "$0")/.."
VELDRIX_SCREENSHOTS="$PWD/docs/images" xvfb-run -a -s "-screen 0 1400x900x24" \
  ./build/default/tests/gui/forms_tests -platform xcb screenshotsForTheGuide
