#pragma once

// Two ways for a test to make a disk run out of room: a tiny tmpfs where the test may mount
// one (it runs as root on Linux), and otherwise a limit on the size of the files the process
// writes, beyond which a write fails with "File too large".

#include <QString>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>
#if defined(__linux__)
#include <sys/mount.h>
#include <unistd.h>
#endif

class TinyFolder
{
public:
    explicit TinyFolder(int kibibytes = 64)
    {
#if defined(__linux__)
        if (dir.isValid() && ::geteuid() == 0) {
            const QByteArray options = "size=" + QByteArray::number(kibibytes) + "k";
            mounted =
                ::mount("tmpfs", dir.path().toLocal8Bit().constData(), "tmpfs", 0, options.constData()) == 0;
        }
#endif
    }
    TinyFolder(const TinyFolder &) = delete;
    TinyFolder &operator=(const TinyFolder &) = delete;
    ~TinyFolder()
    {
#if defined(__linux__)
        if (mounted)
            ::umount2(dir.path().toLocal8Bit().constData(), MNT_DETACH);
#endif
    }
    // False where no tmpfs could be mounted; the folder is then an ordinary one.
    bool isMounted() const
    {
        return mounted;
    }
    QString filePath(const QString &name) const
    {
        return dir.filePath(name);
    }
    QString path() const
    {
        return dir.path();
    }

private:
    QTemporaryDir dir;
    bool mounted = false;
};

// While it lives, files this process writes cannot grow beyond `bytes`.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &saved);
        previous = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = saved;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, previous);
    }

private:
    rlimit saved{};
    void (*previous)(int) = nullptr;
};
