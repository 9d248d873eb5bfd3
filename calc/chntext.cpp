#include "chntext.h"

#include "chnmap.h"
#include "cmtdchannel.h"
#include "cursorvalue.h"
#include "phasor.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdio>

namespace {

QByteArray tr8(const char *key)
{
    return QCoreApplication::translate("ChnText", key).toLocal8Bit();
}

QByteArray printed(const char *format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

QByteArray prefixed(double value)
{
    const double a = std::fabs(value);
    if (a < 0.05)
        return printed("%.3fm", value * 1000.0);
    if (a > 1000000.0)
        return printed("%.3fM", value * 0.000001);
    if (a > 1000.0)
        return printed("%.3fk", value * 0.001);
    return printed("%.3f", value);
}

QByteArray numberPrefix(const CChnMapBase &chn, uint32_t flags)
{
    if (flags & DisplayNoIndex)
        return QByteArray();
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%3d:", chn.Index());
    return buffer;
}

QByteArray composeRow(const QByteArray &number, const char *name, const char *label1,
                      const QByteArray &value1, const char *label2, const QByteArray &value2, uint32_t flags)
{
    QByteArray text;
    if (flags & DisplayNameAhead) {
        text = number + name + " [" + label1 + '=' + value1 + "][" + label2 + '=' + value2 + ']';
    } else {
        text = number + '[' + label1 + '=' + value1 + "][" + label2 + '=' + value2 + "] " + name;
    }
    return text;
}

} // namespace

QByteArray FormatChannelNumber(const CChnMapAnalog &chn, double value, uint32_t flags)
{
    const CmtdChn_Analog *c = chn.config;
    const bool primary = (flags & DisplayPrimary) != 0;
    const bool ratio = c && (c->HasRatings() || c->HasLineRatio());
    const char marker = c ? c->ps : 'S';
    const QByteArray unit = chn.unit.text;
    if (chn.kindCode == ClassDCV || chn.kindCode == ClassDCC) {
        if (!ratio || !primary)
            return prefixed(value) + unit;
        if (marker != 'P' && marker != 'p')
            return prefixed(value * chn.TransformRatio()) + unit;
        return printed("%.3f", value / chn.unit.factor) + unit;
    }
    if (primary && ratio) {
        value *= chn.TransformRatio();
        if (chn.unit.prefix == 'k')
            return printed("%.3f", value * 0.001) + 'k' + unit;
    }
    return printed("%.3f", value) + unit;
}

QByteArray AngleText(double re, double im)
{
    return tr8("(Ang)") + printed("%.3f", std::atan2(im, re) * 57.29577957855229) + tr8("(Deg)");
}

QByteArray ValueText(const CChnMapAnalog &chn, const ChnCursorValue &info, int index, uint32_t flags)
{
    double value = chn.Value(index);
    if (flags & DisplayBaseEffective) {
        if (info.flags & ChnCursorValue::HasPhasor)
            value = Effective(info.phasor);
        else if (info.flags & ChnCursorValue::HasMean)
            value = info.phasor.re;
    } else if (flags & DisplayRealEffective) {
        value = info.effective;
    }
    QByteArray text = FormatChannelNumber(chn, value, flags);
    if ((flags & DisplayAngle) && (info.flags & ChnCursorValue::HasPhasor))
        text += AngleText(info.phasor.re, info.phasor.im);
    return text;
}

QByteArray RowText(const CChnMapAnalog &chn, const ChnCursorValue &t1, int index1, const ChnCursorValue &t2,
                   int index2, uint32_t flags, const char *label1, const char *label2)
{
    return composeRow(numberPrefix(chn, flags), chn.Name(), label1, ValueText(chn, t1, index1, flags), label2,
                      ValueText(chn, t2, index2, flags), flags);
}

QByteArray StatusRowText(const CChnMapStatus &chn, int index1, int index2, uint32_t flags, const char *label1,
                         const char *label2)
{
    return composeRow(numberPrefix(chn, flags), chn.Name(), label1, QByteArray::number(chn.Bit(index1)),
                      label2, QByteArray::number(chn.Bit(index2)), flags);
}

QByteArray ExtentText(const CChnMapAnalog &chn, uint32_t flags)
{
    return composeRow(numberPrefix(chn, flags), chn.Name(), "max",
                      FormatChannelNumber(chn, chn.maxValue, flags), "min",
                      FormatChannelNumber(chn, chn.minValue, flags), flags);
}

QByteArray DisplayName(const CChnMapBase &chn, uint32_t flags)
{
    return numberPrefix(chn, flags) + chn.Name();
}
