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
