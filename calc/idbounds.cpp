#include "idbounds.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr const char *kContext = "CAnaFormUnitIdBoundDlg";

QString tr(const char *text)
{
    return QCoreApplication::translate(kContext, text);
}

double secondInflection(const IdBounds &b)
{
    return std::max(double(b.fIres[1]), double(b.fIres[0]));
}

} // namespace

int IdCharacteristic(const IdBounds &b, double irEnd, IdPlanePoint points[4])
{
    int count = 0;
    const auto add = [&](double ir) { points[count++] = IdPlanePoint{ir, IdOperateLevel(b, ir)}; };
    add(0.0);
    const double knee1 = b.fIres[0];
    if (knee1 < irEnd)
        add(knee1);
    if (b.nRes == 3) {
        const double knee2 = secondInflection(b);
        if (knee2 > knee1 && knee2 < irEnd)
            add(knee2);
    }
    add(std::max(irEnd, 0.0));
    return count;
}

double IdOperateLevel(const IdBounds &b, double ir)
{
    const double knee1 = b.fIres[0];
    const double base = b.fIocd;
    if (b.nRes != 3)
        return ir <= knee1 ? base : base + double(b.fk[0]) * (ir - knee1);
    const double knee2 = secondInflection(b);
    if (ir <= knee1)
        return base + double(b.fk[0]) * ir;
    const double atKnee1 = base + double(b.fk[0]) * knee1;
    if (ir <= knee2)
        return atKnee1 + double(b.fk[1]) * (ir - knee1);
    return atKnee1 + double(b.fk[1]) * (knee2 - knee1) + double(b.fk[2]) * (ir - knee2);
}

bool IdInOperateArea(const IdBounds &b, double ir, double id)
{
    return id > double(b.fIcdsd) || id > IdOperateLevel(b, ir);
}

bool IdStoreBounds(const QString edits[7], int lines, int mode, double ratedIn, IdBounds &b, QString &error)
{
    static const char *const messages[7] = {
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg", "Invalid [Secondary high-speed diff. cur.] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg", "Invalid [Secondary lowest trigger cur.] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg",
                          "Invalid [Secondary Braking-cur. inflection point 1] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg",
                          "Invalid [Secondary Braking-cur. inflection point 2] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg", "Invalid [Braking coef. 1] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg", "Invalid [Braking coef. 2] setting!"),
        QT_TRANSLATE_NOOP("CAnaFormUnitIdBoundDlg", "Invalid [Braking coef. 3] setting!")};
    const double limits[7] = {40.0 * ratedIn, 20.0 * ratedIn, 20.0 * ratedIn, 20.0 * ratedIn, 2.0, 2.0, 2.0};
    // A two-line characteristic has no second inflection and no slopes 2 and 3.
    const bool used[7] = {true, true, true, lines == 3, true, lines == 3, lines == 3};
    float values[7] = {};
    for (int e = 0; e < 7; ++e) {
        if (!used[e])
            continue;
        bool ok = false;
        const double v = edits[e].trimmed().toDouble(&ok);
        if (!ok || !(v >= 0.0 && v <= limits[e])) {
            error = tr(messages[e]);
            return false;
        }
        values[e] = float(v);
    }
    if (!(values[0] > values[1])) {
        error = tr("[Secondary high-speed diff. cur.] must great than [Secondary lowest trigger cur.]!");
        return false;
    }
    if (mode < 1 || mode > 4) {
        error = tr("Please Choose [Braking Mode]!");
        return false;
    }
    if (lines != 2 && lines != 3) {
        error = tr("Please Choose [Line Number]!");
        return false;
    }
    error.clear();
    b.nRes = lines;
    b.fIcdsd = values[0];
    b.fIocd = values[1];
    b.fIres[0] = values[2];
    b.fk[0] = values[4];
    if (lines == 3) {
        b.fIres[1] = values[3];
        b.fk[1] = values[5];
        b.fk[2] = values[6];
    }
    return true;
}
