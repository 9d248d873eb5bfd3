#pragma once

#include <QByteArray>
#include <QString>

// Turns a recording's 8-bit text into display text: UTF-8 where the bytes are valid UTF-8,
// otherwise the locale's code page.
QString CliText(const QByteArray &bytes);
