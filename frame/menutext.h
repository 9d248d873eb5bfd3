#pragma once

#include <QString>

#include <initializer_list>

// A menu text as the user reads it. Our texts mark their access key as "(&X)"; any other "&"
// is part of the words ("Add & Manage Marks(&M)", "G&T") and is doubled so that Qt shows it
// instead of underlining the next letter.
QString MenuText(const QString &text);

// A file name from a save dialog with the extension the file must have: a name typed without
// it ("fault2") gets it, one that has it in any case ("FAULT2.CFG") is kept. `accepted` lists
// the extensions that may stand, the first is the one added.
QString PathWithExtension(const QString &path, std::initializer_list<const char *> accepted);
