#include "genboundfile.h"

#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdlib>
#include <cstring>

namespace {

constexpr int kLineSize = 4096;

const char *const kExciContext = "CAnaFormPwrLossExciBoundDlg";
const char *const kStepContext = "CAnaFormPwrLossStepBoundDlg";
const char *const kPQGContext = "CAnaFormPwrPQGBoundDlg";

// A value line "key=%.4f//comment": the comment in the local encoding like the banner.
void printValue(CTextOutput &out, const char *key, float value, const QString &comment)
{
    out.Printf("%s=%.4f%s\n", key, value, comment.toLocal8Bit().constData());
}

void printBanner(CTextOutput &out, const char *rule, const QString &title)
{
    out.Printf("%s\n", rule);
    out.Printf("%s\n", title.toLocal8Bit().constData());
    out.Printf("%s\n\n", rule);
    out.Printf("[common]\n");
}

// A key of section "common" with its target; a key read is converted as far as it is a number.
struct KeyTarget
{
    const char *key;
    float *value;
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// "Bounds=" with nothing behind it: the line of a set with every characteristic switched off.
bool isEmptyBoundsLine(const char *line)
{
    while (isBlank(*line))
        ++line;
    if (qstrnicmp(line, "Bounds", 6) != 0)
        return false;
    line += 6;
    while (isBlank(*line))
        ++line;
    if (*line++ != '=')
        return false;
    while (isBlank(*line))
        ++line;
    return *line == 0;
}

// The next section head or key line. The shared key reader passes over keys without a value,
// which would leave the characteristics of a set saved with all of them off as they were; that
// one line is taken here.
int nextKeyLine(CDiskFile &file, char *buffer, int size, char *&key, char *&value)
{
    static char boundsKey[] = "Bounds";
    static char empty[] = "";
    for (;;) {
        std::memset(buffer, 0, size_t(size));
        if (file.Gets(buffer, size) == 0)
            return KeyLineEnd;
        if (char *comment = std::strstr(buffer, "//"))
            *comment = 0;
        if (isEmptyBoundsLine(buffer)) {
            key = boundsKey;
            value = empty;
            return KeyLineKey;
        }
        const int kind = ParseKeyLine(buffer, key, value);
        if (kind != 0)
            return kind;
    }
}

// Walks the file and hands each key of section "common" to `take`.
template <typename Take> void readCommon(CDiskFile &file, Take take)
{
    char buffer[kLineSize];
    char *key = nullptr;
    char *value = nullptr;
    bool common = false;
    for (;;) {
        const int kind = nextKeyLine(file, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            return;
        if (kind == KeyLineSection) {
            common = qstricmp(key, "common") == 0;
            continue;
        }
        if (common)
            take(key, value);
    }
}

void readKeys(CDiskFile &file, const KeyTarget *targets, int count, uint32_t *bounds)
{
    readCommon(file, [&](const char *key, const char *value) {
        for (int i = 0; i < count; ++i) {
            if (qstricmp(key, targets[i].key) == 0) {
                *targets[i].value = float(std::atof(value));
                return;
            }
        }
        if (bounds && qstricmp(key, "Bounds") == 0) {
            static const char *const names[] = {"LineQ", "CirQe", "CirPe", "CirAsyn", "CirUser"};
            *bounds = 0;
            for (int bit = 0; bit < 5; ++bit) {
                if (std::strstr(value, names[bit]))
                    *bounds |= 1u << bit;
            }
        }
    });
}

const char *const kRule = "//+++++++++++++++++++++++++++++++++++++++++";
const char *const kLongRule = "//+++++++++++++++++++++++++++++++++++++++++++++++";

} // namespace

QByteArray ExciBoundsFileText(const ExciBounds &b)
{
    CTextOutput out;
    printBanner(out, kRule, QStringLiteral("// TRWK.VELDRIX发电机失磁分析边界参数文件"));
    printValue(out, "fPs", b.fPs, QStringLiteral("//失磁前系统有功功率(MW,一次值)"));
    printValue(out, "fBeta", b.fBeta, QStringLiteral("//无功进相角(β)(°)"));
    printValue(out, "fFai", b.fFai, QStringLiteral("//静稳边界圆偏移角(φ)(°)"));
    printValue(out, "fUfset", b.fUfset, QStringLiteral("//励磁低电压(V,一次值)"));
    printValue(out, "fKf", b.fKf, QStringLiteral("//Uf-P系数(Pt'=fUfset*fSb/fKf+fPt)"));
    printValue(out, "fAlfa", b.fAlfa, QStringLiteral("//定制圆偏移角(α)(°)"));
    printValue(out, "fXM", b.fXM, QStringLiteral("//定制圆XM(标么值)"));
    printValue(out, "fXN", b.fXN, QStringLiteral("//定制圆XN(标么值)"));
    printValue(out, "fZLimit", b.fZLimit, QStringLiteral("//阻抗限制(标么值)"));
    out.Printf("Bounds=%s%s%s%s%s\n", b.nBounds & ExciBounds::LineQ ? "LineQ," : "",
               b.nBounds & ExciBounds::CirQe ? "CirQe," : "", b.nBounds & ExciBounds::CirPe ? "CirPe," : "",
               b.nBounds & ExciBounds::CirAsyn ? "CirAsyn," : "",
               b.nBounds & ExciBounds::CirUser ? "CirUser," : "");
    return out.bytes();
}

QByteArray StepBoundsFileText(const StepBounds &b)
{
    CTextOutput out;
    printBanner(out, kRule, QStringLiteral("// TRWK.VELDRIX发电机失步分析边界参数文件"));
    printValue(out, "fXt", b.fXt, QStringLiteral("//主变压器短路电抗(标么值)"));
    printValue(out, "fFai", b.fFai, QStringLiteral("//透镜倾角(ф)(°)"));
    printValue(out, "fAlfa", b.fAlfa, QStringLiteral("//透镜圆内角(α)(°)"));
    printValue(out, "fZLimit", b.fZLimit, QStringLiteral("//阻抗限制(标么值)"));
    return out.bytes();
}

QByteArray PQGBoundsFileText(const PQGBounds &b)
{
    CTextOutput out;
    printBanner(out, kLongRule, QStringLiteral("// TRWK.VELDRIX发电机运行极限图分析边界参数文件"));
    printValue(out, "fIk", b.fIk, QStringLiteral("//定子最大电流(标么值)"));
    printValue(out, "fPk", b.fPk, QStringLiteral("//原动机出力(标么值)"));
    printValue(out, "fEk", b.fEk, QStringLiteral("//发电机内最大电势(标么值)"));
    printValue(out, "fUk", b.fUk, QStringLiteral("//发电机机端运行电压(标么值)"));
    printValue(out, "fGk", b.fGk, QStringLiteral("//发电机稳定储备百分比"));
    return out.bytes();
}

void ReadExciBounds(CDiskFile &file, ExciBounds &b)
{
    const KeyTarget targets[] = {{"fPs", &b.fPs},       {"fBeta", &b.fBeta}, {"fFai", &b.fFai},
                                 {"fUfset", &b.fUfset}, {"fKf", &b.fKf},     {"fAlfa", &b.fAlfa},
                                 {"fXM", &b.fXM},       {"fXN", &b.fXN},     {"fZLimit", &b.fZLimit}};
    readKeys(file, targets, 9, &b.nBounds);
}

void ReadStepBounds(CDiskFile &file, StepBounds &b)
{
    const KeyTarget targets[] = {
        {"fXt", &b.fXt}, {"fFai", &b.fFai}, {"fAlfa", &b.fAlfa}, {"fZLimit", &b.fZLimit}};
    readKeys(file, targets, 4, nullptr);
}

void ReadPQGBounds(CDiskFile &file, PQGBounds &b)
{
    const KeyTarget targets[] = {
        {"fIk", &b.fIk}, {"fPk", &b.fPk}, {"fEk", &b.fEk}, {"fUk", &b.fUk}, {"fGk", &b.fGk}};
    readKeys(file, targets, 5, nullptr);
}

bool saveExciBounds(const ExciBounds &b, const QString &path, QString &message)
{
    return SaveSettingsText(ExciBoundsFileText(b), kExciContext, path, message);
}

bool saveStepBounds(const StepBounds &b, const QString &path, QString &message)
{
    return SaveSettingsText(StepBoundsFileText(b), kStepContext, path, message);
}

bool savePQGBounds(const PQGBounds &b, const QString &path, QString &message)
{
    return SaveSettingsText(PQGBoundsFileText(b), kPQGContext, path, message);
}

bool loadExciBounds(ExciBounds &b, const QString &path, QString &message)
{
    return LoadSettingsFile(kExciContext, path, message, [&](CDiskFile &file) { ReadExciBounds(file, b); });
}

bool loadStepBounds(StepBounds &b, const QString &path, QString &message)
{
    return LoadSettingsFile(kStepContext, path, message, [&](CDiskFile &file) { ReadStepBounds(file, b); });
}

bool loadPQGBounds(PQGBounds &b, const QString &path, QString &message)
{
    return LoadSettingsFile(kPQGContext, path, message, [&](CDiskFile &file) { ReadPQGBounds(file, b); });
}
