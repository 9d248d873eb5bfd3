// The exact copy of a recording: a multiplier per channel that fits its values, stamps that
// read back to the same times, missing-value markers where the form has them.

#include "exactcopy.h"

#include "cfffile.h"
#include "cmtd99file.h"
#include "safewrite.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#if defined(Q_OS_UNIX)
#include <sys/stat.h>
#endif

namespace {

constexpr int kRecordsPerWrite = 1024;
constexpr double kAsciiLimit = 99999.0;
constexpr double kAsciiLimit2013 = 99998.0; // 99,999 is a 2013 ASCII file's missing value
constexpr double kInt16Limit = 32767.0;
constexpr double kInt32Limit = 2147483647.0;
constexpr uint32_t kFloatMissing = 0xFFFFFFFFu; // a NaN

QString tr(const char *text)
{
    return QCoreApplication::translate("CExactCopy", text);
}

// The form being written, resolved from the recording and the caller's wishes.
struct Target
{
    int revision = 1999;
    QByteArray fileType; // as written on the type line
    bool ascii = false;
    bool floats = false;
    int width = 2;        // bytes of a binary value
    double limit = 0.0;   // largest raw magnitude of an integer form
    bool markers = false; // the form has missing-value markers (2013)
};

// How one analog channel is written.
struct Coding
{
    double f = 1.0; // stored value per file unit: unit prefix, and secondary over primary for P
    float a = 1.0f;
    float b = 0.0f;
    double min = 0.0;
    double max = 0.0;
};

struct Plan
{
    Target target;
    std::vector<Coding> codings;
    float timeMult = 1.0f;
    int64_t shift = 0; // added to each time before it is written as a stamp
};

// The stores of the file's own channels; virtual channels are never written.
std::vector<const CChnMapAnalog *> fileStores(const CCmtd99File &file)
{
    std::vector<const CChnMapAnalog *> stores;
    const int analogs = file.FileAnalogStoreCount();
    for (int i = 0; i < analogs; ++i)
        stores.push_back(file.analogMaps[size_t(i)].get());
    return stores;
}

int revisionOf(const QByteArray &revYear)
{
    const int year = revYear.toInt();
    return year >= 2013 ? 2013 : (year >= 1999 ? 1999 : 1991);
}

bool resolveTarget(const CCmtd99File &file, const ExactCopyFormat &format, Target &target, QString *error)
{
    target.revision = format.revision ? format.revision : revisionOf(file.fileDesc.revYear);
    QByteArray type = format.fileType.isEmpty() ? file.fileDesc.fileType.trimmed().toUpper()
                                                : format.fileType.trimmed().toUpper();
    if (format.fileType.isEmpty() && type != "ASCII" && !(target.revision == 2013 && type == "BINARY32") &&
        !(target.revision == 2013 && type == "FLOAT32"))
        type = "BINARY"; // a type line the loader had to guess past: the data was binary
    if (target.revision != 1991 && target.revision != 1999 && target.revision != 2013) {
        *error = tr("%1 is no revision of the standard that recordings are written in").arg(target.revision);
        return false;
    }
    if (type != "ASCII" && type != "BINARY" && type != "BINARY32" && type != "FLOAT32") {
        *error = tr("\"%1\" is no data file type").arg(QString::fromLatin1(type));
        return false;
    }
    if ((type == "BINARY32" || type == "FLOAT32") && target.revision != 2013) {
        *error = tr("%1 data needs a 2013 recording").arg(QString::fromLatin1(type));
        return false;
    }
    target.fileType = type;
    target.ascii = type == "ASCII";
    target.floats = type == "FLOAT32";
    target.width = type == "BINARY" ? 2 : 4;
    if (target.ascii)
        target.limit = target.revision == 2013 ? kAsciiLimit2013 : kAsciiLimit;
    else
        target.limit = target.width == 2 ? kInt16Limit : kInt32Limit;
    target.markers = target.revision == 2013;
    return true;
}

// The factor between a file value and the stored value, as the store was built.
double storedPerFileUnit(const CChnMapAnalog &map)
{
    const CmtdChn_Analog &c = *map.config;
    double f = double(map.unit.factor);
    if (c.ps == 'P' || c.ps == 'p')
        f = double(c.secondary) / double(c.primary) * f;
    return std::isfinite(f) && f != 0.0 ? f : 1.0;
}

// The smallest float not below `value`, so that a multiplier never shrinks in rounding.
float floatAtLeast(double value)
{
    float f = static_cast<float>(value);
    if (double(f) < value)
        f = std::nextafter(f, FLT_MAX);
    return f;
}

// Keeps the channel's multiplier and offset where the values fit the target with them;
// otherwise the offset stays and the multiplier grows until the farthest value fits.
Coding chooseCoding(const CChnMapAnalog &map, int points, const Target &target)
{
    const CmtdChn_Analog &c = *map.config;
    Coding coding;
    coding.f = storedPerFileUnit(map);
    coding.a = c.a;
    coding.b = c.b;
    coding.min = c.min;
    coding.max = c.max;
    const float *values = map.Values();
    double lowest = 0.0;
    double highest = 0.0;
    bool any = false;
    for (int n = 0; n < points; ++n) {
        if (!std::isfinite(values[n]))
            continue;
        const double u = double(values[n]) / coding.f;
        lowest = any ? std::min(lowest, u) : u;
        highest = any ? std::max(highest, u) : u;
        any = true;
    }
    const double limit = target.floats ? 1e38 : target.limit;
    auto fits = [&](double a, double b) {
        if (!(a != 0.0) || !std::isfinite(a) || !std::isfinite(b))
            return false;
        const double r1 = (lowest - b) / a;
        const double r2 = (highest - b) / a;
        const double edge = target.floats ? limit : limit + 0.5;
        return std::fabs(r1) < edge && std::fabs(r2) < edge;
    };
    if (!any || fits(c.a, c.b))
        return coding;
    const double b = std::isfinite(c.b) ? double(c.b) : 0.0;
    const double reach = std::max(std::fabs(lowest - b), std::fabs(highest - b));
    coding.b = static_cast<float>(b);
    coding.a = floatAtLeast(target.floats ? std::max(1.0, reach / limit) : reach / limit);
    if (!(coding.a > 0.0f))
        coding.a = 1.0f; // every value equals the offset: any multiplier holds them
    // The configured range keeps its meaning in the new raw values.
    auto rawOf = [&](double oldRaw) {
        const double raw = (oldRaw * double(c.a) + double(c.b) - double(coding.b)) / double(coding.a);
        return std::isfinite(raw) ? std::clamp(std::round(raw), -limit, limit) : (raw < 0 ? -limit : limit);
    };
    coding.min = rawOf(c.min);
    coding.max = rawOf(c.max);
    if (coding.min > coding.max)
        std::swap(coding.min, coding.max);
    return coding;
}

// Whether every written rate is usable; otherwise the reader derives the rates from the stamps.
bool ratesUsable(const CCmtd99File &file)
{
    if (file.segments.empty())
        return false;
    return std::all_of(file.segments.begin(), file.segments.end(),
                       [](const SampleSegment &s) { return s.rate > 0.0f; });
}

// The reader counts the stamps from the start of the recording (and takes start minus trigger
// off) when the first one is not negative and, with usable rates, not already start minus
// trigger. The copy shifts its stamps so that this decision gives back the times it holds.
bool chooseShift(const CCmtd99File &file, Plan &plan)
{
    const int64_t delay =
        file.fileDesc.triggerTime.ToMicroseconds() - file.fileDesc.startTime.ToMicroseconds();
    const int64_t first = file.sampleTimes[0];
    const bool usable = ratesUsable(file);
    auto readerShifts = [&](int64_t stamp) { return stamp >= 0 && (!usable || stamp != -delay); };
    if (!readerShifts(first) || delay == 0) {
        plan.shift = 0;
        return true;
    }
    if (readerShifts(first + delay)) {
        plan.shift = delay;
        return true;
    }
    return false;
}

// The time multiplier: the recording's own where its stamps come back exactly, otherwise whole
// microseconds or a power of ten of them, as fine as 32-bit stamps allow.
bool chooseTimeMult(const CCmtd99File &file, Plan &plan)
{
    std::vector<float> candidates;
    if (plan.target.revision != 1991 && file.fileDesc.timeMult > 0.0f)
        candidates.push_back(file.fileDesc.timeMult);
    for (float m = 1.0f; m <= 1e6f && (plan.target.revision != 1991 || m == 1.0f); m *= 10.0f)
        candidates.push_back(m);
    float fitting = 0.0f;
    for (const float m : candidates) {
        bool exact = true;
        bool fit = true;
        for (int n = 0; n < file.loadedPoints && fit; ++n) {
            const int64_t t = file.sampleTimes[n] + plan.shift;
            const double stamp = std::round(double(t) / double(m));
            fit = std::fabs(stamp) <= kInt32Limit;
            exact = exact && int64_t(std::round(stamp * double(m))) == t;
        }
        if (fit && exact) {
            plan.timeMult = m;
            return true;
        }
        if (fit && fitting == 0.0f)
            fitting = m;
    }
    plan.timeMult = fitting;
    return fitting > 0.0f;
}

// The first sample that is not a finite number, where the form has no marker for it.
bool checkFinite(const CCmtd99File &file, const Target &target, QString *error)
{
    if (target.markers)
        return true;
    for (const CChnMapAnalog *map : fileStores(file)) {
        const float *values = map->Values();
        for (int n = 0; n < file.loadedPoints; ++n) {
            if (!std::isfinite(values[n])) {
                *error = tr("Channel %1 holds no number at sample %2, which a %3 recording cannot hold")
                             .arg(file.Text(QByteArray(map->Name())))
                             .arg(n + 1)
                             .arg(target.revision);
                return false;
            }
        }
    }
    return true;
}

bool makePlan(const CCmtd99File &file, const ExactCopyFormat &format, Plan &plan, QString *error)
{
    if (file.loadedPoints < 1 || !file.sampleTimes) {
        *error = tr("The recording holds no samples to write");
        return false;
    }
    if (!resolveTarget(file, format, plan.target, error) || !checkFinite(file, plan.target, error))
        return false;
    if (!chooseShift(file, plan) || !chooseTimeMult(file, plan)) {
        *error = tr("The time stamps of this recording cannot be written so that they read back");
        return false;
    }
    for (const CChnMapAnalog *map : fileStores(file))
        plan.codings.push_back(chooseCoding(*map, file.loadedPoints, plan.target));
    return true;
}

void appendNumber(QByteArray &text, double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 9);
    text.append(buffer, result.ptr - buffer);
}

void appendTime(QByteArray &text, const RecordTime &t, bool monthFirst)
{
    char line[64];
    const int length =
        std::snprintf(line, sizeof line, "%02d/%02d/%04d,%02d:%02d:%02d.%06d\n", monthFirst ? t.month : t.day,
                      monthFirst ? t.day : t.month, t.year, t.hour, t.minute, t.second, int(t.microsecond));
    text.append(line, std::clamp(length, 0, int(sizeof line) - 1));
}

QByteArray revisionText(const CCmtd99File &file, const Target &target)
{
    if (revisionOf(file.fileDesc.revYear) == target.revision && target.revision != 1991)
        return file.fileDesc.revYear;
    return QByteArray::number(target.revision);
}

// The configuration of the copy: the recording's own description with the copy's multipliers,
// offsets, raw ranges, segments, type and time multiplier.
QByteArray configText(const CCmtd99File &file, const Plan &plan)
{
    const CmtdFileDescription &desc = file.fileDesc;
    const int revision = plan.target.revision;
    QByteArray text = desc.stationName + ',' + desc.recDevId;
    if (revision != 1991)
        text += ',' + revisionText(file, plan.target);
    text += '\n';
    const int analogs = file.FileAnalogStoreCount();
    const int statuses = static_cast<int>(file.statusMaps.size());
    text += QByteArray::number(analogs + statuses) + ',' + QByteArray::number(analogs) + "A," +
            QByteArray::number(statuses) + "D\n";
    for (int i = 0; i < analogs; ++i) {
        const CmtdChn_Analog &c = *file.analogMaps[i]->config;
        const Coding &coding = plan.codings[i];
        text += QByteArray::number(c.index) + ',' + c.ch_id + ',' + c.ph + ',' + c.ccbm + ',' + c.uu;
        for (const double v : {double(coding.a), double(coding.b), double(c.skew), coding.min, coding.max,
                               double(c.primary), double(c.secondary)}) {
            text += ',';
            appendNumber(text, v);
        }
        text += ',';
        text += c.ps ? c.ps : 'S';
        text += '\n';
    }
    for (const auto &map : file.statusMaps) {
        const CmtdChn_Status &c = *map->config;
        text += QByteArray::number(c.index) + ',' + c.ch_id + ',' + c.ph + ',' + c.ccbm + ',' +
                QByteArray::number(int(c.normalState)) + '\n';
    }
    appendNumber(text, desc.lineFreq);
    text += '\n';
    if (file.segments.empty()) {
        text += "0\n0," + QByteArray::number(file.loadedPoints) + '\n';
    } else {
        text += QByteArray::number(qsizetype(file.segments.size())) + '\n';
        for (const SampleSegment &segment : file.segments) {
            appendNumber(text, segment.rate);
            text += ',' + QByteArray::number(segment.end) + '\n';
        }
    }
    appendTime(text, desc.startTime, revision == 1991);
    appendTime(text, desc.triggerTime, revision == 1991);
    text += plan.target.fileType + '\n';
    if (revision == 1991)
        return text;
    appendNumber(text, plan.timeMult);
    text += '\n';
    if (revision == 2013) {
        const bool own = desc.is2013();
        text +=
            (own ? desc.timeCode : QByteArray("0")) + ',' + (own ? desc.localCode : QByteArray("0")) + '\n';
        text += (own ? desc.timeQuality : QByteArray("0")) + ',' + (own ? desc.leapSecond : QByteArray("0")) +
                '\n';
    }
    return text;
}

int32_t stampOf(const CCmtd99File &file, const Plan &plan, int n)
{
    const double stamp = std::round(double(file.sampleTimes[n] + plan.shift) / double(plan.timeMult));
    return static_cast<int32_t>(std::clamp(stamp, -kInt32Limit, kInt32Limit));
}

// The raw integer of a finite stored value, rounded half away from zero.
int64_t rawInteger(float value, const Coding &coding, double limit)
{
    const double raw = (double(value) / coding.f - double(coding.b)) / double(coding.a);
    return static_cast<int64_t>(std::clamp(std::round(raw), -limit, limit));
}

void putLittle(unsigned char *p, uint32_t v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

void putAnalog(unsigned char *p, float value, const Coding &coding, const Target &target)
{
    if (!std::isfinite(value)) {
        // Only a 2013 form reaches here with such a value: its missing-value marker.
        putLittle(p, target.floats ? kFloatMissing : (target.width == 4 ? 0x80000000u : 0x8000u),
                  target.width);
        return;
    }
    if (target.floats) {
        const auto raw = static_cast<float>((double(value) / coding.f - double(coding.b)) / double(coding.a));
        uint32_t bits;
        std::memcpy(&bits, &raw, sizeof bits);
        putLittle(p, bits, 4);
        return;
    }
    putLittle(p, static_cast<uint32_t>(rawInteger(value, coding, target.limit)), target.width);
}

int recordSize(const CCmtd99File &file, const Target &target)
{
    const int statuses = static_cast<int>(file.statusMaps.size());
    return 8 + file.FileAnalogStoreCount() * target.width + (statuses + 15) / 16 * 2;
}

bool writeBinary(const CCmtd99File &file, const Plan &plan, QIODevice &out)
{
    const Target &target = plan.target;
    const int size = recordSize(file, target);
    const int analogs = file.FileAnalogStoreCount();
    const int statuses = static_cast<int>(file.statusMaps.size());
    std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[size_t(size) * kRecordsPerWrite]);
    if (!block)
        return false;
    for (int first = 0; first < file.loadedPoints; first += kRecordsPerWrite) {
        const int count = std::min(kRecordsPerWrite, file.loadedPoints - first);
        std::memset(block.get(), 0, size_t(size) * size_t(count));
        for (int i = 0; i < count; ++i) {
            const int n = first + i;
            unsigned char *record = block.get() + size_t(i) * size_t(size);
            putLittle(record, uint32_t(n + 1), 4);
            putLittle(record + 4, static_cast<uint32_t>(stampOf(file, plan, n)), 4);
            for (int c = 0; c < analogs; ++c)
                putAnalog(record + 8 + c * target.width, file.analogMaps[c]->Values()[n], plan.codings[c],
                          target);
            unsigned char *status = record + 8 + analogs * target.width;
            for (int c = 0; c < statuses; ++c) {
                if (file.statusMaps[c]->Bit(n))
                    status[c >> 3] |= static_cast<unsigned char>(1u << (c & 7));
            }
        }
        const qint64 bytes = qint64(size) * count;
        if (out.write(reinterpret_cast<const char *>(block.get()), bytes) != bytes)
            return false;
    }
    return true;
}

void appendInteger(QByteArray &text, int64_t value)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    text.append(buffer, result.ptr - buffer);
}

bool writeAscii(const CCmtd99File &file, const Plan &plan, QIODevice &out)
{
    QByteArray text;
    const int analogs = file.FileAnalogStoreCount();
    for (int n = 0; n < file.loadedPoints; ++n) {
        appendInteger(text, n + 1);
        text += ',';
        appendInteger(text, stampOf(file, plan, n));
        for (int c = 0; c < analogs; ++c) {
            text += ',';
            const float value = file.analogMaps[c]->Values()[n];
            // A 2013 ASCII file marks a missing value by an empty field.
            if (std::isfinite(value))
                appendInteger(text, rawInteger(value, plan.codings[c], plan.target.limit));
        }
        for (const auto &map : file.statusMaps) {
            text += ',';
            text += map->Bit(n) ? '1' : '0';
        }
        text += '\n';
        if (text.size() >= (1 << 20) || n + 1 == file.loadedPoints) {
            if (out.write(text) != text.size())
                return false;
            text.clear();
        }
    }
    return true;
}

bool writeData(const CCmtd99File &file, const Plan &plan, QIODevice &out)
{
    return plan.target.ascii ? writeAscii(file, plan, out) : writeBinary(file, plan, out);
}

bool writeFailed(CSafeWriteSet &set, QIODevice *out)
{
    set.WriteFailed(out);
    return false;
}

bool writePair(const CCmtd99File &file, const Plan &plan, const QString &path, CSafeWriteSet &set)
{
    const QFileInfo info(path);
    const bool upper = info.suffix() == QLatin1String("CFG");
    const QString datPath = info.dir().filePath(info.completeBaseName() +
                                                (upper ? QLatin1String(".DAT") : QLatin1String(".dat")));
    QIODevice *dat = set.Begin(datPath);
    QIODevice *cfg = dat ? set.Begin(path) : nullptr;
    if (!cfg)
        return false;
    if (!writeData(file, plan, *dat))
        return writeFailed(set, dat);
    const QByteArray text = configText(file, plan);
    if (cfg->write(text) != text.size())
        return writeFailed(set, cfg);
    return true;
}

bool writeCff(const CCmtd99File &file, const Plan &plan, const QString &path, CSafeWriteSet &set)
{
    QIODevice *out = set.Begin(path);
    if (!out)
        return false;
    const QByteArray head =
        CffSectionHead("CFG") + configText(file, plan) + CffSectionHead("INF") + CffSectionHead("HDR") +
        CffDataHead(plan.target.fileType, qint64(recordSize(file, plan.target)) * file.loadedPoints);
    if (out->write(head) != head.size() || !writeData(file, plan, *out))
        return writeFailed(set, out);
    return true;
}

} // namespace

ExactCopyResult SaveExactCopy(const CCmtd99File &file, const QString &path, const ExactCopyFormat &format,
                              QString *error)
{
    QString reason;
    Plan plan;
    if (!makePlan(file, format, plan, &reason)) {
        if (error)
            *error = reason;
        return ExactCopyResult::Refused;
    }
    CSafeWriteSet set;
    const bool cff = path.endsWith(QLatin1String(".cff"), Qt::CaseInsensitive);
    const bool written = cff ? writeCff(file, plan, path, set) : writePair(file, plan, path, set);
    if (written && set.Commit())
        return ExactCopyResult::Written;
    if (error)
        *error = set.ErrorText();
    return ExactCopyResult::WriteFailed;
}

namespace {

// The value the plain Save As rule gives back for a stored value: the multiplier widened by the
// loader's extremes, the stored value divided by the file's own multiplier, read back through
// the channel's prefix and ratio.
struct PlainRule
{
    float a = 1.0f;
    float b = 0.0f;
    double f = 1.0;
    const Target *target = nullptr;

    double readBack(float value) const
    {
        const double raw = (double(value) - double(b)) / double(a);
        double written;
        if (target->floats) {
            written = double(static_cast<float>(raw));
        } else {
            double r = raw + (raw < 0.0 ? -0.5 : 0.5);
            r = !std::isnan(r) ? std::trunc(std::clamp(r, double(INT_MIN), double(INT_MAX)))
                               : double(INT_MIN);
            written = target->width == 2 && !target->ascii ? std::clamp(r, -32768.0, 32767.0) : r;
        }
        return double(static_cast<float>(written * (double(a) * f) + double(b) * f));
    }
};

PlainRule plainRule(const CChnMapAnalog &map, const Target &target)
{
    const CmtdChn_Analog &c = *map.config;
    PlainRule rule;
    rule.a = c.a;
    rule.b = c.b;
    rule.f = storedPerFileUnit(map);
    rule.target = &target;
    if (!target.floats) {
        const bool wide = target.width == 4 && !target.ascii;
        const float peak = std::max(std::fabs(map.maxValue), std::fabs(map.minValue));
        const float r = (peak - c.b) / c.a / (wide ? 2147483000.0f : 32766.0f);
        if (r > 1.0f)
            rule.a *= r;
    }
    return rule;
}

bool changedBySave(const CChnMapAnalog &map, int points, const Target &target)
{
    const PlainRule rule = plainRule(map, target);
    const Coding exact = chooseCoding(map, points, target);
    const double halfStep = target.floats ? 0.0 : 0.5 * std::fabs(double(exact.a) * exact.f);
    const float *values = map.Values();
    for (int n = 0; n < points; ++n) {
        const float v = values[n];
        const double back = rule.readBack(v);
        if (!std::isfinite(v)) {
            if (!(std::isnan(v) ? std::isnan(back) : back == double(v)))
                return true;
            continue;
        }
        // The stored value is a float: its own rounding is no change.
        const double slack = halfStep + 2.0 * double(FLT_EPSILON) * std::fabs(double(v));
        if (!(std::fabs(back - double(v)) <= slack))
            return true;
    }
    return false;
}

// Identity of a file that may not exist yet: its folder after links, and its name; an existing
// file (or link) resolves whole.
QString resolvedPath(const QString &path)
{
    const QFileInfo info(path);
    const QString whole = info.canonicalFilePath();
    if (!whole.isEmpty())
        return whole;
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return (folder.isEmpty() ? info.absolutePath() : folder) + QLatin1Char('/') + info.fileName();
}

bool sameFile(const QString &a, const QString &b)
{
#if defined(Q_OS_UNIX)
    // Hard links share no path; the device and inode tell them.
    struct stat sa, sb;
    if (::stat(QFile::encodeName(a).constData(), &sa) == 0 &&
        ::stat(QFile::encodeName(b).constData(), &sb) == 0)
        return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
#endif
    return resolvedPath(a) == resolvedPath(b);
}

QStringList filesRead(const QString &inputPath)
{
    if (inputPath.endsWith(QLatin1String(".cff"), Qt::CaseInsensitive))
        return {inputPath};
    const QByteArray base = CmtdBasePath(QFile::encodeName(inputPath).constData());
    QStringList files;
    QStringList extensions = {QStringLiteral(".cfg"), QStringLiteral(".dat"), QStringLiteral(".inf"),
                              QStringLiteral(".hdr"), QStringLiteral(".ext")};
    for (int n = 0; n < 100; ++n)
        extensions << QStringLiteral(".d%1").arg(n, 2, 10, QLatin1Char('0'));
    for (const QString &extension : std::as_const(extensions)) {
        for (const QString &variant : {extension, extension.toUpper()}) {
            const QString path = QFile::decodeName(base) + variant;
            if (QFileInfo::exists(path))
                files << path;
        }
    }
    return files;
}

QStringList filesWritten(const QString &outputPath)
{
    if (outputPath.endsWith(QLatin1String(".cff"), Qt::CaseInsensitive))
        return {outputPath};
    const QFileInfo info(outputPath);
    const bool upper = info.suffix() == QLatin1String("CFG");
    return {outputPath, info.dir().filePath(info.completeBaseName() +
                                            (upper ? QLatin1String(".DAT") : QLatin1String(".dat")))};
}

} // namespace

std::vector<ChangedChannel> FindChannelsChangedBySave(const CCmtd99File &file, const ExactCopyFormat &format)
{
    std::vector<ChangedChannel> changed;
    Target target;
    QString ignored;
    if (!resolveTarget(file, format, target, &ignored))
        return changed;
    const int analogs = file.FileAnalogStoreCount();
    for (int i = 0; i < analogs; ++i) {
        const CChnMapAnalog &map = *file.analogMaps[size_t(i)];
        if (changedBySave(map, std::min(file.loadedPoints, map.sampleCount), target))
            changed.push_back(ChangedChannel{i, file.Text(QByteArray(map.Name()))});
    }
    return changed;
}

bool OutputTouchesInput(const QString &inputPath, const QString &outputPath)
{
    const QStringList inputs = filesRead(inputPath);
    for (const QString &output : filesWritten(outputPath)) {
        for (const QString &input : inputs) {
            if (sameFile(output, input))
                return true;
        }
    }
    return false;
}

bool IsRecordingOutputName(const QString &path)
{
    return path.endsWith(QLatin1String(".cfg"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".cff"), Qt::CaseInsensitive);
}
