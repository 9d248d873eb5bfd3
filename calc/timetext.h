#pragma once

#include <QByteArray>

#include <cstdint>

// Texts of a time or a time difference in microseconds, as the time readouts, the status event
// list and its saved file show them. A negative time leads with "-" and the rest is written as
// for the positive value.

// Minutes, seconds and the shortest exact fraction:
// 1.5 s is "0:01.5", 1.25 s "0:01.25", 61.000001 s "1:01.000001"; negative times lead with "-".
QByteArray TimeText(int64_t microseconds);
// Minutes, seconds and always six digits of microseconds ("0:01.500000"): columns of a saved
// event list line up and read back without guessing the precision.
QByteArray TimeTextFull(int64_t microseconds);
// Milliseconds and the microseconds behind them: 1.5 s is "1500.000ms", -1 us "-0.001ms".
QByteArray TimeTextMs(int64_t microseconds);
