#include "settingsfile.h"

#include "diskfile.h"
#include "safewrite.h"

#include <QCoreApplication>
#include <QFile>

namespace {

QString withPath(const char *context, const char *text, const QString &path)
{
    const QString format = QCoreApplication::translate(context, text);
    return QString::asprintf(format.toUtf8().constData(), path.toUtf8().constData());
}

} // namespace

bool SaveSettingsText(const QByteArray &text, const char *context, const QString &path, QString &message)
{
    if (WriteFileSafely(path, text, nullptr)) {
        message.clear();
        return true;
    }
    message = withPath(context, "Create [%s] Error When Save File!", path);
    return false;
}

bool LoadSettingsFile(const char *context, const QString &path, QString &message,
                      const std::function<void(CDiskFile &)> &read)
{
    CDiskFile file;
    if (!file.OpenRegular(QFile::encodeName(path).constData())) {
        message = withPath(context, "Open [%s] Error When Loading it!", path);
        return false;
    }
    message.clear();
    read(file);
    return true;
}
