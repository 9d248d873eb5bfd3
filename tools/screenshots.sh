#!/usr/bin/env bash
# Makes the pictures of the analysis forms, the virtual channels, the plant-unit curves and the fault
# location wizard in the user guide (docs/images/), from the demo recording and two computed line ends,
# on a virtual X display.
# Needs a built tree (cmake --build --preset default) and xvfb-run.
set -euo pipefail
cd "$(dirname "$0")/.."
for suite in forms_tests rxform_tests hmchart_tests faultfind_tests virtual_tests expform_tests mainframe_tests plantcurves_tests combin_tests cutform_tests; do
  VELDRIX_SCREENSHOTS="$PWD/docs/images" xvfb-run -a -s "-screen 0 1400x900x24" \
    "./build/default/tests/gui/$suite" -platform xcb screenshotsForTheGuide
done
