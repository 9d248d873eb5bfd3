#include "cmtdtext.h"

#include <QStringDecoder>
#include <QTextCodec>

QString CmtdText(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    if (QTextCodec *codec = QTextCodec::codecForLocale(); codec && codec->mibEnum() != 106)
        return codec->toUnicode(bytes);
    return QString::fromLatin1(bytes);
}
