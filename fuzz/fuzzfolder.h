#pragma once

// The one temporary folder of a harness process: made before the first input, and emptied and
// removed when the process ends, so that millions of runs leave nothing behind. Readers are fed
// real files in it, as the program feeds them.

#include <QByteArray>

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <unistd.h>

// The folder, with a trailing "/".
inline QByteArray &FuzzDirectory()
{
    static QByteArray directory;
    return directory;
}

inline void RemoveFuzzDirectory()
{
    if (DIR *dir = opendir(FuzzDirectory().constData())) {
        while (const dirent *entry = readdir(dir)) {
            if (entry->d_name[0] != '.')
                unlink((FuzzDirectory() + entry->d_name).constData());
        }
        closedir(dir);
    }
    rmdir(FuzzDirectory().constData());
}

// Makes "<TMPDIR or /tmp>/veldrix-fuzz-<tag>-XXXXXX"; without it there is nothing to fuzz.
inline void MakeFuzzDirectory(const char *tag)
{
    const char *tmp = std::getenv("TMPDIR");
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-" + tag + "-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    FuzzDirectory() = pattern + '/';
    std::atexit(RemoveFuzzDirectory);
}

// Writes a whole file of the harness; a file that cannot be written ends the run.
inline void PutFuzzFile(const QByteArray &path, const void *data, size_t size)
{
    FILE *file = std::fopen(path.constData(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
}
