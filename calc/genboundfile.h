#pragma once

// The settings files of the three generator diagrams: ".teb" (loss of excitation), ".tsb" (pole
// slip) and ".tgb" (capability). Plain sectioned texts in the local 8-bit encoding, each value
// followed on its line by a comment that the number reader stops in front of. The readers take
// files edited by hand (keys in any case, missing keys keep the values they had) and apply no
// range test, which the setup dialog does when the user confirms.

#include "genexci.h"
#include "genpq.h"
#include "genstep.h"

#include <QByteArray>
#include <QString>

class CDiskFile;

QByteArray ExciBoundsFileText(const ExciBounds &b);
QByteArray StepBoundsFileText(const StepBounds &b);
QByteArray PQGBoundsFileText(const PQGBounds &b);

// Read an open file into the record over the values it holds.
void ReadExciBounds(CDiskFile &file, ExciBounds &b);
void ReadStepBounds(CDiskFile &file, StepBounds &b);
void ReadPQGBounds(CDiskFile &file, PQGBounds &b);

// Through the program's safe writer; false with "Create [path] Error When Save File!".
bool saveExciBounds(const ExciBounds &b, const QString &path, QString &message);
bool saveStepBounds(const StepBounds &b, const QString &path, QString &message);
bool savePQGBounds(const PQGBounds &b, const QString &path, QString &message);
// False with "Open [path] Error When Loading it!" when the file cannot be opened.
bool loadExciBounds(ExciBounds &b, const QString &path, QString &message);
bool loadStepBounds(StepBounds &b, const QString &path, QString &message);
bool loadPQGBounds(PQGBounds &b, const QString &path, QString &message);
