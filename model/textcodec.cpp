#include "textcodec.h"

#include <QStringDecoder>
#include <QTextCodec>

namespace {

QByteArray g_preferred;

bool validUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    Q_UNUSED(text);
    return !decoder.hasError();
}

// GBK pairs whose lead byte is in the frequent hanzi (0xB0-0xD7) or the punctuation rows
// (0xA1-0xA9): Chinese names are nearly all made of them, Cyrillic words in windows-1251 are not.
bool looksChinese(const QByteArray &bytes)
{
    int pairs = 0;
    int common = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0x80)
            continue;
        if (lead < 0x81 || lead == 0xFF || i + 1 >= bytes.size())
            return false;
        const auto trail = static_cast<unsigned char>(bytes[++i]);
        if (trail < 0x40 || trail == 0x7F || trail == 0xFF)
            return false;
        ++pairs;
        if (trail >= 0xA1 && ((lead >= 0xB0 && lead <= 0xD7) || (lead >= 0xA1 && lead <= 0xA9)))
            ++common;
    }
    return pairs > 0 && common * 10 >= pairs * 7;
}

// Share of runs of high bytes that touch an ASCII letter: a Latin code page writes an accented
// letter inside a word ("Medição"), a Cyrillic one writes whole words between blanks, digits
// and underscores ("1СШ-110_ТН"). Negative where there are no high bytes.
double latinRunShare(const QByteArray &bytes)
{
    auto isLetter = [&bytes](qsizetype i) {
        if (i < 0 || i >= bytes.size())
            return false;
        const char c = bytes[i];
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    };
    int runs = 0;
    int touching = 0;
    for (qsizetype i = 0; i < bytes.size();) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80) {
            ++i;
            continue;
        }
        const qsizetype start = i;
        while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) >= 0x80)
            ++i;
        ++runs;
        if (isLetter(start - 1) || isLetter(i))
            ++touching;
    }
    return runs > 0 ? double(touching) / runs : -1.0;
}

} // namespace

void SetPreferredTextCodec(const QByteArray &codec)
{
    g_preferred = codec;
}

const QByteArray &PreferredTextCodec()
{
    return g_preferred;
}

QByteArray DetectTextCodec(const QByteArray &sample, const QByteArray &preferred)
{
    if (validUtf8(sample))
        return QByteArrayLiteral("UTF-8");
    if (!preferred.isEmpty() && QTextCodec::codecForName(preferred))
        return QTextCodec::codecForName(preferred)->name();
    if (looksChinese(sample))
        return QByteArrayLiteral("GB18030");
    const double latin = latinRunShare(sample);
    if (latin >= 0.5)
        return QByteArrayLiteral("windows-1252");
    if (latin >= 0.0)
        return QByteArrayLiteral("windows-1251");
    const QTextCodec *locale = QTextCodec::codecForLocale();
    return locale ? locale->name() : QByteArrayLiteral("UTF-8");
}

QString DecodeText(const QByteArray &bytes, const QByteArray &codec)
{
    if (codec.isEmpty() || codec == "UTF-8")
        return QString::fromUtf8(bytes);
    if (QTextCodec *textCodec = QTextCodec::codecForName(codec))
        return textCodec->toUnicode(bytes);
    return QString::fromUtf8(bytes);
}

QByteArray EncodeText(const QString &text, const QByteArray &codec)
{
    if (!codec.isEmpty() && codec != "UTF-8")
        if (QTextCodec *textCodec = QTextCodec::codecForName(codec))
            return textCodec->fromUnicode(text);
    return text.toUtf8();
}

QList<QByteArray> OfferedTextCodecs()
{
    return {"UTF-8",        "GB18030",      "Big5",         "Shift_JIS",  "EUC-KR",       "windows-1251",
            "KOI8-R",       "windows-1252", "ISO-8859-1",   "ISO-8859-2", "windows-1250", "ISO-8859-7",
            "windows-1253", "windows-1254", "windows-1256", "TIS-620"};
}
