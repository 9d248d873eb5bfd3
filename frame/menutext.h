#pragma once

#include <QString>

// A menu text as the user reads it. Our texts mark their access key as "(&X)"; any other "&"
// is part of the words ("Add & Manage Marks(&M)", "G&T") and is doubled so that Qt shows it
// instead of underlining the next letter.
QString MenuText(const QString &text);
