#pragma once

#include <cstdint>
#include <cstdio>

// The abstract file through which every reader and writer of the system goes. It carries no
// data; its operations have neutral defaults so that a stand-in (a memory file, a null sink)
// need only override what it supports.
class CFileBase
{
public:
    virtual ~CFileBase();
    virtual int Close() { return 0; }
    virtual void Flush() {}
    virtual bool Read(void *buffer, int size) { return false; }
    virtual bool Write(const void *buffer, int size) { return false; }
    virtual int ReadSome(void *buffer, int size) { return 0; }
    virtual int WriteSome(const void *buffer, int size) { return 0; }
    virtual int64_t Seek(int64_t offset, int origin) { return 0; }
    virtual int64_t SeekToBegin() { return 0; }
    virtual int64_t SeekToEnd() { return 0; }
    virtual int64_t GetLength() { return 0; }
    virtual int64_t Tell() { return 0; }
};

// A file on disk over a C library stream. Large transfers go in pieces of at most 1 MiB so
// that a 200 MB recording never needs one giant call. The stream is null while closed.
class CDiskFile : public CFileBase
{
public:
    CDiskFile() = default;
    CDiskFile(const CDiskFile &) = delete;
    CDiskFile &operator=(const CDiskFile &) = delete;
    ~CDiskFile() override;

    int Close() override;
    void Flush() override;
    bool Read(void *buffer, int size) override;
    bool Write(const void *buffer, int size) override;
    int ReadSome(void *buffer, int size) override;
    int WriteSome(const void *buffer, int size) override;
    int64_t Seek(int64_t offset, int origin) override;
    int64_t SeekToBegin() override;
    int64_t SeekToEnd() override;
    int64_t GetLength() override;
    int64_t Tell() override;

    virtual void Printf(const char *format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;
    virtual bool Open(const char *path, const char *mode);
    // Opens for reading only what is an ordinary file on disk: a pipe, a device or a folder
    // named like a recording would block the reader or never end, so it is refused at once
    // (without waiting for a writer) and `notFile` is set.
    bool OpenRegular(const char *path, bool *notFile = nullptr);
    virtual bool Attach(FILE *stream);
    virtual FILE *Detach();
    virtual bool IsEof();
    virtual void NewLine();
    virtual int Gets(char *buffer, int size);

    bool IsOpen() const
    {
        return file != nullptr;
    }

    FILE *file = nullptr;
};

// A stretch [begin, begin + length) of a file read as if it were the whole file: one section of
// a single-file recording, read in place. Reads stop at the end of the stretch; positions and
// the length are those inside it.
class CDiskSection : public CDiskFile
{
public:
    bool OpenSection(const char *path, int64_t begin, int64_t length);

    int ReadSome(void *buffer, int size) override;
    int Gets(char *buffer, int size) override;
    bool IsEof() override;
    int64_t GetLength() override { return m_length; }
    int64_t Tell() override { return m_pos; }
    int64_t Seek(int64_t offset, int origin) override;

private:
    int64_t m_begin = 0;
    int64_t m_length = 0;
    int64_t m_pos = 0;
};
