#pragma once

#include <QByteArray>

#include <QList>
#include <ctime>

#include <cstdint>
#include <vector>

// A date and time as a recorder writes it, to the microsecond. Fields are those that the
// C library left after normalising, so 30 February reads back as 2 March.
struct RecordTime
{
    int16_t year = 2006;
    int16_t month = 2;
    int16_t day = 15;
    int16_t hour = 16;
    int16_t minute = 30;
    int16_t second = 0;
    int32_t microsecond = 0;

    // The fixed value that an unread or refused stamp reads as, deliberately not zero.
    void Reset() { *this = RecordTime(); }
    // Local-time microseconds since the epoch; only differences of two stamps carry meaning.
    int64_t ToMicroseconds() const;
};

// Parses "dd/mm/yyyy,hh:mm:ss.ffffff" (1999 form) or "mm/dd/yy,..." (1991 form). A refused
// stamp is reset and false is returned.
bool ParseTime1999(const char *text, RecordTime &time);
bool ParseTime1991(const char *text, RecordTime &time);
// The stamp of a 2013 recording: day first, a fraction of up to nine digits read by place and
// kept to the microsecond. What recorders write besides (a decimal comma, no fraction at all)
// is accepted, and `note` receives a word on it.
bool ParseTime2013(const char *text, RecordTime &time, QByteArray &note);

// Carries clock fields that run over (61 seconds, hour 25) through the calendar, without
// summer time: a recorder's clock reads the same the year round, in any zone the machine runs.
void NormalizeClockFields(std::tm &fields);
// The stamp `microseconds` later (earlier when negative), carried through the calendar.
RecordTime ShiftRecordTime(const RecordTime &time, int64_t microseconds);

// One sampling segment: rate and the end of its samples, cumulative over the recording.
struct SampleSegment
{
    enum : uint32_t
    {
        RateGiven = 0x1,
        EndGiven = 0x2
    };
    uint32_t flags = 0;
    int16_t index = 0; // ordinal from 1
    float rate = 0.0f; // samples per second
    int32_t start = 0; // first sample
    int32_t end = 0;   // one past the last sample
};

// One line of a reader's message list. The data file uses a running number as `line`.
struct LoadMessage
{
    int32_t line = 0;
    QByteArray text; // local 8-bit code page
};
using LoadMessageList = QList<LoadMessage>;

// A key of an extension file section that no reader knows, kept to be written back.
struct InfKeyValue
{
    uint32_t flags = 0x80000000u;
    QByteArray key;
    QByteArray value;
};
using InfKeyValueList = QList<InfKeyValue>;

// Everything the ".cfg" says of a recording apart from its channels. A field whose bit is set
// in `flags` is final: later sources (the extension file) leave it alone.
struct CmtdFileDescription
{
    enum : uint32_t
    {
        StationGiven = 1u << 0,
        DeviceGiven = 1u << 1,
        RevYearGiven = 1u << 2,
        LineFreqGiven = 1u << 3,
        TotalGiven = 1u << 4,
        AnalogCountGiven = 1u << 5,
        StatusCountGiven = 1u << 6,
        RateCountGiven = 1u << 7,
        StartTimeGiven = 1u << 8,
        TriggerTimeGiven = 1u << 9,
        FileTypeGiven = 1u << 10,
        TimeMultGiven = 1u << 11
    };

    uint32_t flags = 0;
    QByteArray stationName;
    QByteArray recDevId;
    QByteArray revYear;
    float lineFreq = 50.0f;
    int16_t totalChannels = 0;
    int16_t analogCount = 0;
    int16_t statusCount = 0;
    int16_t rateCount = 0;
    std::vector<SampleSegment> rawSegments;
    RecordTime startTime;
    RecordTime triggerTime;
    QByteArray fileType;
    float timeMult = 1.0f;
    // The lines of a 2013 configuration behind the multiplier, kept as written.
    QByteArray timeCode;    // time zone of the stamps, e.g. "+5h30"
    QByteArray localCode;   // time zone of the recorder's place
    QByteArray timeQuality; // tmq_code
    QByteArray leapSecond;  // leapsec
    InfKeyValueList otherKeys;

    // 2013 and later: 32-bit data types, nanosecond stamps, the time zone lines.
    bool is2013() const { return revYear.toInt() >= 2013; }

    void Reset() { *this = CmtdFileDescription(); }
};
