#include "seriesjob.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtdchannel.h"
#include "derivedseries.h"
#include "freqseries.h"

#include <QCoreApplication>
#include <QStringList>

namespace {

// A translated format with its %s and %d fields filled in order: a translation may not hand
// a name to printf.
QString format(const char *context, const char *key, const QStringList &fields)
{
    const QString text = QCoreApplication::translate(context, key);
    QString out;
    qsizetype next = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('%') && i + 1 < text.size() &&
            (text[i + 1] == QLatin1Char('s') || text[i + 1] == QLatin1Char('d'))) {
            if (next < fields.size())
                out += fields[next++];
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

QString harmonicName(const QString &sourceName, const SeriesJobParams &params)
{
    static const char *const curveTypes[] = {QT_TRANSLATE_NOOP("CVirChnDlgHm", "Eff-Value Curve"),
                                             QT_TRANSLATE_NOOP("CVirChnDlgHm", "R-Part Curve"),
                                             QT_TRANSLATE_NOOP("CVirChnDlgHm", "X-Part Curve")};
    if (params.order == 0)
        return format("CVirChnDlgHm", "%s DC-Part", {sourceName});
    const int part = params.part >= 0 && params.part <= 2 ? params.part : 0;
    const QString curveType = QCoreApplication::translate("CVirChnDlgHm", curveTypes[part]);
    if (params.order == 1)
        return format("CVirChnDlgHm", "%s Base-Part %s", {sourceName, curveType});
    return format("CVirChnDlgHm", "%s harm-%d %s", {sourceName, QString::number(params.order), curveType});
}

} // namespace

SeriesJobTraits SeriesJobResultTraits(const CChnMapAnalog &source, const SeriesJobParams &params)
{
    SeriesJobTraits traits;
    traits.ratedFreq = source.config ? source.config->ratedFreq : 0.0f;
    traits.chnClass = source.Class();
    traits.ac = source.IsAC();
    traits.direct = false;
    if (params.kind == SeriesJobAverage) {
        // The mean of a cycle is a DC quantity of the same measure.
        if (traits.chnClass == ClassACV)
            traits.chnClass = ClassDCV;
        else if (traits.chnClass == ClassACC)
            traits.chnClass = ClassDCC;
        traits.ac = false;
        traits.direct = true;
    } else if (params.kind == SeriesJobHarmonic) {
        if (params.order == 0 || params.part == HarmonicEffective) {
            traits.ac = false;
        } else {
            // A real or imaginary part swings at the harmonic's own frequency.
            traits.ac = true;
            traits.ratedFreq = float(params.order * 50);
        }
    }
    return traits;
}

QString SeriesJobDefaultName(const QString &sourceName, const SeriesJobParams &params)
{
    switch (params.kind) {
    case SeriesJobDelta: {
        static const char *const modes[] = {"(MN)", "(0N)", "(NN)"};
        const int mode = params.mode >= 0 && params.mode <= 2 ? params.mode : 0;
        return format("CVirChnDlgDelta", "%s Delta ", {sourceName}) +
               QCoreApplication::translate("CVirChnDlgDelta", modes[mode]);
    }
    case SeriesJobAverage:
        return format("CVirChnDlgAvg", "%s DC-Part", {sourceName});
    case SeriesJobHarmonic:
        return harmonicName(sourceName, params);
    case SeriesJobHamming:
        return format("CVirChnDlgFilterHamm", "%s Hamming-Window Filter", {sourceName});
    case SeriesJobOnePointDiff:
        return format("CVirChnDlgFilterDiff", "%s One-Point-Diff. Filter", {sourceName});
    case SeriesJobFreqZeroCross:
        return format("CVirChnDlgFreqX0", "%s Signal Freq.", {sourceName});
    case SeriesJobFreqDft:
        return format("CVirChnDlgFreqDft", "%s Base Freq.", {sourceName});
    default:
        return sourceName;
    }
}

bool RunSeriesJob(const CCmtd99File &file, const CChnMapAnalog &source, const SeriesJobParams &params,
                  float *y, SeriesProgress *progress)
{
    const SeriesSource from = SourceOf(source);
    switch (params.kind) {
    case SeriesJobDelta:
        return DeltaSeries(file, from, params.mode, y, progress);
    case SeriesJobAverage:
        return AverageSeries(file, from, y, progress);
    case SeriesJobHarmonic:
        return HarmonicPartSeries(file, from, params.order, params.part, y, progress);
    case SeriesJobHamming:
        return HammingFilterSeries(file, from, params.endFreq, params.length, y, progress);
    case SeriesJobOnePointDiff:
        return OnePointDiffSeries(file, from, true, y, progress);
    case SeriesJobFreqZeroCross:
        return ZeroCrossFreqSeries(file, from, y, progress);
    case SeriesJobFreqDft:
        return DftInsertFreqSeries(file, from, y, progress);
    default:
        return true;
    }
}
