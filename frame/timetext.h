#pragma once

#include <QByteArray>

#include <cstdint>

// Minutes, seconds and the shortest exact fraction of a time in microseconds:
// 1.5 s is "0:01.5", 1.25 s "0:01.25", 61.000001 s "1:01.000001"; negative times lead with "-".
QByteArray TimeText(int64_t microseconds);
