#include "diskfile.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int kPiece = 1 << 20; // largest single transfer
}

CFileBase::~CFileBase() = default;

CDiskFile::~CDiskFile()
{
    Close();
}

int CDiskFile::Close()
{
    if (!file)
        return 0;
    std::fflush(file);
    const int result = std::fclose(file);
    file = nullptr;
    return result;
}

void CDiskFile::Flush()
{
    if (file)
        std::fflush(file);
}

bool CDiskFile::Read(void *buffer, int size)
{
    if (!file || size < 0)
        return false;
    return ReadSome(buffer, size) == size;
}

bool CDiskFile::Write(const void *buffer, int size)
{
    if (!file || size < 0)
        return false;
    return WriteSome(buffer, size) == size;
}

int CDiskFile::ReadSome(void *buffer, int size)
{
    if (!file)
        return -1;
    if (size < 1)
        return 0;
    char *p = static_cast<char *>(buffer);
    int done = 0;
    while (done < size) {
        const int piece = size - done < kPiece ? size - done : kPiece;
        const size_t got = std::fread(p + done, 1, static_cast<size_t>(piece), file);
        done += static_cast<int>(got);
        if (got < static_cast<size_t>(piece))
            break;
    }
    return done;
}

int CDiskFile::WriteSome(const void *buffer, int size)
{
    if (!file)
        return -1;
    if (size < 1)
        return 0;
    const char *p = static_cast<const char *>(buffer);
    int done = 0;
    while (done < size) {
        const int piece = size - done < kPiece ? size - done : kPiece;
        const size_t put = std::fwrite(p + done, 1, static_cast<size_t>(piece), file);
        done += static_cast<int>(put);
        if (put < static_cast<size_t>(piece))
            break;
    }
    return done;
}

int64_t CDiskFile::Seek(int64_t offset, int origin)
{
    if (!file)
        return -1;
    const int64_t before = ftello(file);
    if (before < 0 || fseeko(file, static_cast<off_t>(offset), origin) != 0)
        return -1;
    return before;
}

int64_t CDiskFile::SeekToBegin()
{
    return Seek(0, SEEK_SET);
}

int64_t CDiskFile::SeekToEnd()
{
    return Seek(0, SEEK_END);
}

int64_t CDiskFile::GetLength()
{
    if (!file)
        return -1;
    const int64_t here = ftello(file);
    if (here < 0 || fseeko(file, 0, SEEK_END) != 0)
        return -1;
    const int64_t length = ftello(file);
    fseeko(file, static_cast<off_t>(here), SEEK_SET);
    return length;
}

int64_t CDiskFile::Tell()
{
    if (!file)
        return -1;
    return ftello(file);
}

void CDiskFile::Printf(const char *format, ...)
{
    if (!file)
        return;
    va_list args;
    va_start(args, format);
    std::vfprintf(file, format, args);
    va_end(args);
}

bool CDiskFile::Open(const char *path, const char *mode)
{
    Close();
    if (!path || !mode)
        return false;
    file = std::fopen(path, mode);
    return file != nullptr;
}

bool CDiskFile::OpenRegular(const char *path, bool *notFile)
{
    Close();
    if (notFile)
        *notFile = false;
    if (!path)
        return false;
    // Non-blocking, so that opening a pipe with no writer returns at once; the type is checked
    // on the open descriptor, so a name swapped in between cannot slip through.
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        if (notFile)
            *notFile = true;
        ::close(fd);
        return false;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    file = ::fdopen(fd, "rb");
    if (!file) {
        ::close(fd);
        return false;
    }
    return true;
}

bool CDiskFile::Attach(FILE *stream)
{
    Close();
    file = stream;
    return file != nullptr;
}

FILE *CDiskFile::Detach()
{
    FILE *stream = file;
    file = nullptr;
    return stream;
}

bool CDiskFile::IsEof()
{
    return !file || std::feof(file) != 0;
}

void CDiskFile::NewLine()
{
    if (file)
        std::fputs("\r\n", file);
}

int CDiskFile::Gets(char *buffer, int size)
{
    if (!buffer || size < 1)
        return 0;
    buffer[0] = 0;
    if (!file || size < 2)
        return 0;
    if (!std::fgets(buffer, size, file))
        return 0;
    return static_cast<int>(std::strlen(buffer));
}

bool CDiskSection::OpenSection(const char *path, int64_t begin, int64_t length)
{
    if (begin < 0 || length < 0 || !OpenRegular(path))
        return false;
    m_begin = begin;
    m_length = length;
    m_pos = 0;
    return fseeko(file, static_cast<off_t>(begin), SEEK_SET) == 0;
}

int CDiskSection::ReadSome(void *buffer, int size)
{
    if (!file)
        return -1;
    const int64_t left = m_length - m_pos;
    const int wanted = static_cast<int>(std::min<int64_t>(size, std::max<int64_t>(left, 0)));
    const int got = CDiskFile::ReadSome(buffer, wanted);
    if (got > 0)
        m_pos += got;
    return got;
}

int CDiskSection::Gets(char *buffer, int size)
{
    if (!buffer || size < 1)
        return 0;
    buffer[0] = 0;
    const int64_t left = m_length - m_pos;
    if (!file || size < 2 || left <= 0)
        return 0;
    // No more than the stretch holds, so that a line never runs into the next section.
    const int limit = static_cast<int>(std::min<int64_t>(size, left + 1));
    if (!std::fgets(buffer, limit, file))
        return 0;
    // The position from the stream itself: a zero byte inside the line would fool strlen.
    const int64_t at = ftello(file);
    m_pos = at >= m_begin ? at - m_begin : m_length;
    return static_cast<int>(std::strlen(buffer));
}

bool CDiskSection::IsEof()
{
    return !file || m_pos >= m_length || std::feof(file) != 0;
}

int64_t CDiskSection::Seek(int64_t offset, int origin)
{
    if (!file)
        return -1;
    int64_t target = offset;
    if (origin == SEEK_CUR)
        target = m_pos + offset;
    else if (origin == SEEK_END)
        target = m_length + offset;
    if (target < 0 || target > m_length || fseeko(file, static_cast<off_t>(m_begin + target), SEEK_SET) != 0)
        return -1;
    const int64_t before = m_pos;
    m_pos = target;
    return before;
}
