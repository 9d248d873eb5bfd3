#pragma once

#include <QByteArray>
#include <QString>

// Turns a recording's 8-bit text (names, units, messages) into display text: UTF-8 where the bytes are valid
// UTF-8, otherwise the locale's code page.
QString CmtdText(const QByteArray &bytes);
