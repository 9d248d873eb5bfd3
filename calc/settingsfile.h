#pragma once

// The settings files of the diagrams' characteristics (".txb", ".tzb", ".tdb", ".teb", ".tsb",
// ".tgb") are saved and opened alike, and their failures read alike in each dialog's words.

#include <QByteArray>
#include <QString>

#include <functional>

class CDiskFile;

// Writes `text` through the program's safe writer. False when the file could not be created;
// `message` is then "Create [path] Error When Save File!" in the translation `context`.
bool SaveSettingsText(const QByteArray &text, const char *context, const QString &path, QString &message);

// Opens `path` and hands the open file to `read`. False only when it could not be opened;
// `message` is then "Open [path] Error When Loading it!" in the translation `context`.
bool LoadSettingsFile(const char *context, const QString &path, QString &message,
                      const std::function<void(CDiskFile &)> &read);
