#include "cmtdtypes.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

// Recorders keep standard time the year round and only differences of stamps are used, so
// the clock fields are turned into seconds without any daylight saving. mktime with tm_isdst
// 0 does not give that in a zone with summer time: it moves a summer stamp's fields an hour
// on, and a start and trigger on both sides of the switch end up an hour too far apart.
std::time_t StandardTimeSeconds(std::tm &fields)
{
#ifdef _WIN32
    return _mkgmtime(&fields);
#else
    return timegm(&fields);
#endif
}

} // namespace

void NormalizeClockFields(std::tm &fields)
{
    const std::time_t seconds = StandardTimeSeconds(fields);
#ifdef _WIN32
    gmtime_s(&fields, &seconds);
#else
    gmtime_r(&seconds, &fields);
#endif
}

namespace {

// Recorders write two-digit years as often as four-digit ones; "37" means 2037, "38" 1938.
int yearSince1900(int year)
{
    if (year >= 38)
        return year > 1900 ? year - 1900 : year;
    return year + 100;
}

bool parseStamp(const char *text, RecordTime &time, bool dayFirst, QByteArray *note = nullptr)
{
    if (!text)
        return false;
    const char *p = text;
    const int first = std::atoi(p);
    if (!(p = std::strchr(p, '/')))
        return false;
    const int second = std::atoi(++p);
    if (!(p = std::strchr(p, '/')))
        return false;
    const int year = std::atoi(++p);
    if (!(p = std::strchr(p, ',')))
        return false;
    const int hour = std::atoi(++p);
    if (!(p = std::strchr(p, ':')))
        return false;
    const int minute = std::atoi(++p);
    if (!(p = std::strchr(p, ':')))
        return false;
    const int sec = std::atoi(++p);
    long fraction = 0;
    if (!note) {
        if (!(p = std::strchr(p, '.')))
            return false;
        fraction = std::atol(++p);
    } else {
        // Digits by place: ".931" is 931 ms, ".123456789" 123456 µs and 789 ns dropped.
        const char *dot = std::strpbrk(p, ".,");
        if (!dot) {
            *note = "No fraction of a second in the stamp, read as .000000: ";
        } else {
            if (*dot == ',')
                *note = "Decimal comma in the fraction of the stamp, read as a point: ";
            const char *digit = dot + 1;
            int places = 0;
            for (; *digit >= '0' && *digit <= '9' && places < 6; ++digit, ++places)
                fraction = fraction * 10 + (*digit - '0');
            for (; places < 6; ++places)
                fraction *= 10;
        }
    }

    // A month of INT_MIN has no month before it; such a stamp is no date at all.
    const int month = dayFirst ? second : first;
    if (month == INT_MIN)
        return false;
    std::tm fields{};
    fields.tm_mday = dayFirst ? first : second;
    fields.tm_mon = month - 1;
    fields.tm_year = yearSince1900(year);
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = sec;
    fields.tm_isdst = 0;
    const std::time_t seconds = StandardTimeSeconds(fields);
    if (seconds == static_cast<std::time_t>(-1) || fraction < 0 || fraction > 999999)
        return false;
    // The record keeps 16-bit fields; a year that does not fit is no recording date.
    const long fullYear = static_cast<long>(fields.tm_year) + 1900;
    if (fullYear < 0 || fullYear > 32767)
        return false;
    time.year = static_cast<int16_t>(fullYear);
    time.month = static_cast<int16_t>(fields.tm_mon + 1);
    time.day = static_cast<int16_t>(fields.tm_mday);
    time.hour = static_cast<int16_t>(fields.tm_hour);
    time.minute = static_cast<int16_t>(fields.tm_min);
    time.second = static_cast<int16_t>(fields.tm_sec);
    time.microsecond = static_cast<int32_t>(fraction);
    return true;
}

} // namespace

int64_t RecordTime::ToMicroseconds() const
{
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = 0;
    const std::time_t seconds = StandardTimeSeconds(fields);
    return static_cast<int64_t>(seconds) * 1000000 + microsecond;
}

bool ParseTime1999(const char *text, RecordTime &time)
{
    if (parseStamp(text, time, true))
        return true;
    time.Reset();
    return false;
}

bool ParseTime1991(const char *text, RecordTime &time)
{
    if (parseStamp(text, time, false))
        return true;
    time.Reset();
    return false;
}

bool ParseTime2013(const char *text, RecordTime &time, QByteArray &note)
{
    note.clear();
    if (parseStamp(text, time, true, &note)) {
        if (!note.isEmpty())
            note += text;
        return true;
    }
    note.clear();
    time.Reset();
    return false;
}

RecordTime ShiftRecordTime(const RecordTime &time, int64_t microseconds)
{
    const int64_t total = int64_t(time.microsecond) + microseconds;
    int64_t seconds = total / 1000000;
    int64_t rest = total % 1000000;
    if (rest < 0) {
        rest += 1000000;
        --seconds;
    }
    std::tm fields{};
    fields.tm_year = time.year - 1900;
    fields.tm_mon = time.month - 1;
    fields.tm_mday = time.day;
    fields.tm_hour = time.hour;
    fields.tm_min = time.minute;
    fields.tm_sec = int(std::clamp<int64_t>(time.second + seconds, INT_MIN / 2, INT_MAX / 2));
    NormalizeClockFields(fields);
    RecordTime shifted;
    shifted.year = int16_t(fields.tm_year + 1900);
    shifted.month = int16_t(fields.tm_mon + 1);
    shifted.day = int16_t(fields.tm_mday);
    shifted.hour = int16_t(fields.tm_hour);
    shifted.minute = int16_t(fields.tm_min);
    shifted.second = int16_t(fields.tm_sec);
    shifted.microsecond = int32_t(rest);
    return shifted;
}
