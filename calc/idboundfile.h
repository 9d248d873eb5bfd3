#pragma once

// The ".tdb" settings file of the differential characteristic: one relay's settings kept for
// many recordings. A plain sectioned text in the local 8-bit encoding; the reader takes files
// edited by hand (keys in any case and order, missing keys keep their defaults, a list of too
// few values keeps the old ones) and performs no range test, which the boundary dialog applies.

#include "idbounds.h"

#include <QByteArray>
#include <QString>

class CDiskFile;

// The whole file text: the banner, then the section common.
QByteArray IdBoundsFileText(const IdBounds &bounds);

// Writes through the program's safe writer. False when the file could not be created;
// `message` then holds "Create [path] Error When Save File!".
bool saveIdBounds(const IdBounds &bounds, const QString &path, QString &message);

// Reads an open file into `bounds`, which starts from the defaults.
void ReadIdBounds(CDiskFile &file, IdBounds &bounds);

// False only when the file could not be opened; `message` then holds
// "Open [path] Error When Loading it!" and `bounds` is unchanged.
bool loadIdBounds(IdBounds &bounds, const QString &path, QString &message);
