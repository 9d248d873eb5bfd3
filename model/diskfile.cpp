#include "diskfile.h"

#include <cstdarg>
#include <cstring>

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
