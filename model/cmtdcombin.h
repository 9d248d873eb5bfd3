#pragma once

// The combination of recordings of one event: the base file's range is cut into a new
// recording, and the chosen channels of each other file are resampled onto its time axis at
// the align points the engineer set (a sample of the other file that lies on a sample of the
// base), by an interpolation, or copied where the samples meet exactly.

#include <QByteArray>
#include <QString>

#include <cstdint>

#include <memory>
#include <vector>

class CCmtd99File;
class CChnMapAnalog;
class CChnMapStatus;
class SeriesProgress;
using ProgressFn = int (*)(void *context, int code, int total, int current);

// The interpolation of a combination, as the dialog numbers them.
enum CombinMethod
{
    CombinHermite = 0,   // "Charleshermite Three-Times Insert"
    CombinLagrange2 = 1, // "Lagrange Tow-Times Insert"
    CombinNewton = 2,    // "Newton Diff. & Quotient Insert"
    CombinLagrange1 = 3, // "Lagrange One-Time Insert"
    CombinKriging = 4    // "Kriging Insert": the last value carries over
};

// The text of a method in the dialog; any number above 3 is the carried value.
QString CombinMethodText(int method);

struct CombinItem
{
    const CCmtd99File *file = nullptr;
    int alignPoint = 0;     // the sample of this file that lies on `baseAlignPoint`
    int baseAlignPoint = 0; // a sample of the base file
    int first = 0;          // the base file's range
    int last = 0;
    int method = CombinHermite;
    std::vector<const CChnMapAnalog *> analogChannels;
    std::vector<const CChnMapStatus *> statusChannels;
};

class CCmtd99FileCombin
{
public:
    CCmtd99FileCombin();
    ~CCmtd99FileCombin();

    CombinItem m_base;
    std::vector<std::unique_ptr<CombinItem>> m_others;
    std::unique_ptr<CCmtd99File> m_result;
    QByteArray m_strTitle;

    CombinItem &addOther(const CCmtd99File *file);
    // The index the item had, -1 when the file has none.
    int removeOther(const CCmtd99File *file);
    // The item of a file, the base's included; null when none.
    CombinItem *item(const CCmtd99File *file);

    // Builds the result in memory: the base's cut, then each other file merged in order. False
    // with `error` when memory ran out or the progress asked to stop (then `stopped`).
    bool build(QString &error, float highestRate = 0.0f, ProgressFn report = nullptr, void *owner = nullptr);
    bool stopped = false;
    // Builds and writes the result as `basePath` + ".cfg", ".dat" and ".inf" (`datMode`
    // "ASCII" or "BINARY"); false with the failure's message.
    bool run(const QString &basePath, QString &error, const QByteArray &datMode, float highestRate = 0.0f,
             ProgressFn report = nullptr, void *owner = nullptr);
};

// Merges the chosen channels of `item` (from `source`) into `result`: `baseAlignTime` is the
// time of the item's base align point after the first sample of the base range, in the base
// file's microseconds. False with `error` when memory ran out.
// `progress` (optional) counts the result's samples from `done`; false also when it asks to stop.
bool MergeFrom(CCmtd99File &result, const CCmtd99File &source, int64_t baseAlignTime, const CombinItem &item,
               QString &error, SeriesProgress *progress = nullptr, int done = 0);
