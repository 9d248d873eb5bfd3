#include "timetext.h"

#include <cstdio>

QByteArray TimeText(int64_t us)
{
    const bool negative = us < 0;
    const uint64_t value = negative ? uint64_t(0) - uint64_t(us) : uint64_t(us);
    const auto minutes = static_cast<long long>(value / 60000000u);
    const auto seconds = static_cast<int>(value / 1000000u % 60u);
    const auto fraction = static_cast<long>(value % 1000000u);
    // The fewest digits that still say the time exactly.
    static const struct
    {
        long divisor;
        const char *format;
    } forms[] = {{100000, "%lld:%02d.%ld"}, {10000, "%lld:%02d.%02ld"}, {1000, "%lld:%02d.%03ld"},
                 {100, "%lld:%02d.%04ld"},  {10, "%lld:%02d.%05ld"},    {1, "%lld:%02d.%06ld"}};
    char buffer[64];
    char *out = buffer;
    if (negative)
        *out++ = '-';
    for (const auto &form : forms) {
        if (fraction % form.divisor == 0) {
            std::snprintf(out, sizeof buffer - 1, form.format, minutes, seconds, fraction / form.divisor);
            break;
        }
    }
    return buffer;
}
