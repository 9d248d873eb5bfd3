#pragma once

// The ".tzb" settings file of the impedance boundaries: one set of relay characteristics kept
// for many recordings. A plain sectioned text in the local 8-bit encoding; the reader takes
// files edited by hand (any order, any case of keys, missing keys keep their defaults) and
// performs no range test, which the setup dialog applies when the user confirms.

#include "rxbounds.h"

#include <QByteArray>
#include <QString>

class CDiskFile;

// The whole file text: the banner, then sections common, poly, line, circle and rect, all of
// them whether enabled or not. Derived fields are not written.
QByteArray RxBoundsFileText(const RxBoundSet &set);

// Writes the set through the program's safe writer. False when the file could not be created;
// `message` then holds "Create [path] Error When Save File!".
bool saveRxBounds(const RxBoundSet &set, const QString &path, QString &message);

// Reads an open file into `set`, which starts from the defaults.
void ReadRxBounds(CDiskFile &file, RxBoundSet &set);

// False only when the file could not be opened; `message` then holds
// "Open [path] Error When Loading it!" and `set` is unchanged.
bool loadRxBounds(RxBoundSet &set, const QString &path, QString &message);
