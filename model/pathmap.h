#pragma once

// The settings path map: recordings of one site usually lie under one folder and all need the
// same plant settings and channel groups. Each entry ties a folder to a settings file (".tcfg")
// and a channel-group file (".tcgp"); opening a recording under the folder applies both. The
// map is one list for the whole program, read at start-up and changed only by its dialogs.

#include <QByteArray>
#include <QString>

#include <vector>

class CCmtd99File;

struct PathMapEntry
{
    QByteArray rootPath; // upper case once read
    QByteArray settingsFile;
    QByteArray groupFile;
};

// The program's map.
std::vector<PathMapEntry> &PathMapEntries();

// Reads the map from `path` into PathMapEntries(), replacing what it held; a missing file is an
// empty map, an entry without a folder or without both files is dropped. The number of entries.
int LoadPathMapFrom(const QByteArray &path);
// Writes every entry to `path` through the program's safe writer; the number written, 0 when
// the file could not be written (`error` then says why).
int SavePathMapTo(const QByteArray &path, QString *error = nullptr);
// The entry whose folder stands anywhere in `path` (upper-cased, as the roots are); of several
// the longest root, of equally long ones the first. Null when none matches.
const PathMapEntry *findPathMapEntry(const char *path);
// Reads the entry's settings file and then its channel-group file into a loaded recording, as
// an import does: only what the recording still lacks is filled. 3 when done, 4 out of memory.
int ApplyPathMapEntry(CCmtd99File &file, const PathMapEntry &entry);
