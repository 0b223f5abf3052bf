// CFile: stands in for the platform's file class. Unbuffered, with a position of its own, over the
// seam of platform/file_system.h.
#pragma once

#include "platform/export.h"
#include "platform/failures.h"
#include "platform/text.h"
#include "platform/types.h"

#include <cstdint>

/// A file of bytes. Positions and lengths are in bytes and 64 bits wide.
///
/// Each call that reads or writes is one call of the system, and a write that returns has been
/// taken by the system. Every failure is thrown, where it happens, as a `CFileException*` made with
/// `new`, except by Open() and the destructor: `invalidFile` for an operation on a file that is not
/// open, `accessDenied` for one against the mode of the opening, else the system's cause.
class TYMPAN_API CFile {
  public:
    /// How to open: one mode, plus what else is wanted. Sharing is kept to on Windows only, and
    /// bytes are never translated, with typeBinary or without.
    enum : UINT {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareDenyWrite = 0x0020,
        shareDenyNone = 0x0040,
        modeCreate = 0x1000, ///< makes the file, or empties the one that is there
        typeBinary = 0x8000
    };

    /// Where an offset counts from.
    enum : UINT { begin = 0, current = 1, end = 2 };

    /// The value of m_hFile while no file is open.
    static constexpr int hFileNull = -1;

    CFile() noexcept = default;
    /// Opens the file as Open() does; a failure is thrown. \throws CFileException*.
    CFile(const char* path, UINT flags);
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    /// Closes an open file; a failure of that is dropped.
    virtual ~CFile();

    /// Opens a file, at position 0. A file that this object holds open is closed first, and stays
    /// closed when the opening fails. What is opened to be read must be a plain file: a directory,
    /// a device or a pipe is refused as `accessDenied`, at once. Only a device may be opened to be
    /// written beside a plain file.
    /// \param path the path resolver (platform/path_resolver.h) is asked for the file's true path.
    /// \param flags one mode, with `modeCreate` and others joined by `|`. A mode that there isn't
    ///   is refused as `hardIO`.
    /// \param error filled on failure when given: cause, system's number and the path as given.
    /// \return TRUE, or FALSE on failure; nothing is thrown for a file that can't be
    ///   opened.
    /// \throws std::bad_alloc for the path in `error`.
    virtual BOOL Open(const char* path, UINT flags, CFileException* error = nullptr);

    /// Reads from the position on, and moves it by the count read.
    /// \return the count read, less than `count` only at the end of the file.
    /// \throws CFileException*.
    virtual UINT Read(void* buffer, UINT count);

    /// Writes at the position, and moves it behind what was written. A failed write leaves the
    /// position where it was. Bytes between the end of the file and the position become zeros.
    /// \throws CFileException*.
    virtual void Write(const void* buffer, UINT count);

    /// Sets the position, which may lie behind the end of the file.
    /// \param offset bytes, from the place that `from` names: `begin`, `current` or `end`.
    /// \return the new position.
    /// \throws CFileException* with the cause `badSeek` for another `from` and for a place before
    ///   the file's begin or beyond 63 bits; the position stays where it was.
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    /// Sets the position to 0.
    void SeekToBegin() { Seek(0, begin); }
    /// Sets the position to the end of the file. \return the file's length.
    ULONGLONG SeekToEnd() { return Seek(0, end); }

    /// Where the next read or write begins. \throws CFileException* when no file is open.
    virtual ULONGLONG GetPosition() const;
    /// The bytes of the file, asked of the system each time. \throws CFileException*.
    virtual ULONGLONG GetLength() const;

    /// Cuts the file, or makes it longer by zeros. The position stays. \throws CFileException*.
    virtual void SetLength(ULONGLONG length);

    /// Has the system bring to the disk what was written; nothing for a file opened to be read.
    /// \throws CFileException*.
    virtual void Flush();

    /// Closes the file; nothing when none is open. The object is closed even when this throws.
    /// \throws CFileException*.
    virtual void Close();

    /// Removes a file. Asks the path resolver, as opening does. \throws CFileException*.
    static void Remove(const char* path);
    /// Renames a file; refused as `accessDenied` when there is one of the new name. Asks the path
    /// resolver for both. \throws CFileException*.
    static void Rename(const char* oldPath, const char* newPath);

    /// The last part of the path, extension included, behind the last '/' or '\\'; empty unless the
    /// file is open.
    virtual CString GetFileTitle() const;
    /// The path as it was given to the opening, before the path resolver; empty unless the file is
    /// open.
    virtual CString GetFilePath() const;

    /// The open file's number, or hFileNull.
    int m_hFile = hFileNull;

  private:
    int OpenForErrno(const char* path, UINT flags);
    int CloseForErrno() noexcept;
    void RequireOpen() const;
    void RequireReadable() const;
    void RequireWritable() const;
    std::int64_t Length() const;
    std::int64_t StartOf(UINT from) const;
    [[noreturn]] void Throw(int error) const;

    CString path_;
    std::int64_t position_ = 0;
    bool readable_ = false;
    bool writable_ = false;
};
