#pragma once

#include <cstdint>

// The three colour schemes of the views, ten ARGB colours each: 0 the widget behind the
// document, 1 the wave background, 2 axis lines and frames, 4 row base lines, 5 axis labels,
// 6 to 9 the cursors and marks. `colorScheme` picks the row for the views that follow it.
constexpr int kSchemeColours = 10;
uint32_t SchemeColour(int scheme, int entry);
const uint32_t *SchemeRow(int scheme);
