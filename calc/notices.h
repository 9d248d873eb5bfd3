#pragma once

#include <QStringList>

class CCmtd99File;

// Remarks beside results that a user could take for facts: the numbers stay as the rules give
// them, and these say where the rules and the recording part ways. Empty when there is nothing
// to say. Read after a load has ended.
QStringList RecordingNotices(const CCmtd99File &file);

// The first point whose stamp lies before the one ahead of it (a 16-bit microsecond counter
// that wraps, a recorder clock set back), or -1 when the stamps never run backwards.
int FirstBackwardStamp(const CCmtd99File &file);
