#include "timetext.h"

#include <cstdio>

namespace {

// The sign written apart and the magnitude without overflow, even for the most negative value.
struct Magnitude
{
    bool negative;
    uint64_t value;
};

Magnitude magnitudeOf(int64_t us)
{
    const bool negative = us < 0;
    return Magnitude{negative, negative ? uint64_t(0) - uint64_t(us) : uint64_t(us)};
}

// Writes the sign and returns where the digits go.
char *startText(char *buffer, const Magnitude &m)
{
    char *out = buffer;
    if (m.negative)
        *out++ = '-';
    *out = 0;
    return out;
}

} // namespace

QByteArray TimeText(int64_t us)
{
    const Magnitude m = magnitudeOf(us);
    const auto minutes = static_cast<long long>(m.value / 60000000u);
    const auto seconds = static_cast<int>(m.value / 1000000u % 60u);
    const auto fraction = static_cast<long>(m.value % 1000000u);
    // The fewest digits that still say the time exactly.
    static const struct
    {
        long divisor;
        const char *format;
    } forms[] = {{100000, "%lld:%02d.%ld"}, {10000, "%lld:%02d.%02ld"}, {1000, "%lld:%02d.%03ld"},
                 {100, "%lld:%02d.%04ld"},  {10, "%lld:%02d.%05ld"},    {1, "%lld:%02d.%06ld"}};
    char buffer[64];
    char *out = startText(buffer, m);
    for (const auto &form : forms) {
        if (fraction % form.divisor == 0) {
            std::snprintf(out, sizeof buffer - 1, form.format, minutes, seconds, fraction / form.divisor);
            break;
        }
    }
    return buffer;
}

QByteArray TimeTextFull(int64_t us)
{
    const Magnitude m = magnitudeOf(us);
    char buffer[64];
    char *out = startText(buffer, m);
    std::snprintf(out, sizeof buffer - 1, "%lld:%02d.%06d", static_cast<long long>(m.value / 60000000u),
                  static_cast<int>(m.value / 1000000u % 60u), static_cast<int>(m.value % 1000000u));
    return buffer;
}

QByteArray TimeTextMs(int64_t us)
{
    const Magnitude m = magnitudeOf(us);
    char buffer[64];
    char *out = startText(buffer, m);
    std::snprintf(out, sizeof buffer - 1, "%llu.%03dms", static_cast<unsigned long long>(m.value / 1000u),
                  static_cast<int>(m.value % 1000u));
    return buffer;
}
