// CException and its kin: stand in for the platform's failures of files and memory, which are
// thrown as pointers to objects made with `new`, and which the catcher ends with Delete().
#pragma once

#include "platform/export.h"
#include "platform/text.h"
#include "platform/types.h"

#include <cstddef>
#include <new>

/// The base of the platform's failures.
///
/// Memory for one that is made with `new` comes from this class, which keeps a list of the
/// addresses that it has given out. That is how Delete() tells such an object from one that stands
/// in a variable, in another object or in the language's own store for what is thrown by value.
/// Arrays of failures are not on the list.
class TYMPAN_API CException {
  public:
    CException() noexcept = default;
    /// @{
    /// A base holds nothing; a derived class copies its members. The copy's memory is its own.
    CException(const CException&) = default;
    CException& operator=(const CException&) = default;
    /// @}
    virtual ~CException();

    /// Destroys an object that was made with `new`; leaves any other alone.
    void Delete() noexcept;

    /// Puts a text for a person into `buffer`, ended by a terminator within its `size` bytes. The
    /// name in a text that is too long is shortened from its front, so that the reason stays. The
    /// base has no text.
    /// \param helpContext set to 0 when given: there is no help to open.
    /// \return FALSE, and an empty text, when there is none to tell or no room for any.
    virtual BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const;

    /// \name Memory
    /// The language's own, with the list of addresses that `Delete()` asks.
    /// @{

    /// \throws std::bad_alloc.
    static void* operator new(std::size_t size);
    /// Null without memory.
    static void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept;
    /// In memory of the caller's; not on the list.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    /// Frees the memory and takes it off the list.
    static void operator delete(void* block) noexcept;
    /// As the one without a tag.
    static void operator delete(void* block, const std::nothrow_t& tag) noexcept;
    /// Does nothing: the memory is the caller's.
    static void operator delete(void*, void*) noexcept {}
    /// @}
};

/// Memory that could not be had.
class TYMPAN_API CMemoryException : public CException {
  public:
    CMemoryException() noexcept = default;
    /// @{
    /// As of the base.
    CMemoryException(const CMemoryException&) = default;
    CMemoryException& operator=(const CMemoryException&) = default;
    /// @}
    ~CMemoryException() override;

    /// As the base; the text is "There is not enough memory.".
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;
};

/// A file operation that failed.
class TYMPAN_API CFileException : public CException {
  public:
    /// Causes, with the platform's numbers.
    enum {
        none = 0,
        genericException = 1,
        generic = genericException,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 13,
        endOfFile = 14
    };

    /// \param cause one of the causes above.
    /// \param osError the system's own number for the failure (`errno`), -1 for none.
    /// \param fileName the file's name as it was given to the operation; null for none.
    explicit CFileException(int cause = none, LONG osError = -1, const char* fileName = nullptr);
    /// @{
    /// Copies cause, system's number and name. \throws std::bad_alloc.
    CFileException(const CFileException&) = default;
    CFileException& operator=(const CFileException&) = default;
    /// @}
    ~CFileException() override;

    /// As the base; the text tells the cause and the file's name, or "(unnamed)".
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

    /// The cause that an `errno` value stands for; 0 is `none`, and a value without a cause of its
    /// own is `genericException`.
    static int ErrnoToException(int error) noexcept;
    /// The same for a system's number as m_lOsError holds it.
    static int OsErrorToException(LONG osError) noexcept;

    /// @{
    /// Throws a `CFileException*` made with `new`, its cause found by the functions above.
    [[noreturn]] static void ThrowErrno(int error, const char* fileName = nullptr);
    [[noreturn]] static void ThrowOsError(LONG osError, const char* fileName = nullptr);
    /// @}

    int m_cause;           ///< one of the causes above
    LONG m_lOsError;       ///< the system's own number for the failure; -1 for none
    CString m_strFileName; ///< the file's name as it was given to the operation; may be empty
};

/// Throws a `CFileException*` made with `new`; the arguments are those of its constructor.
[[noreturn]] TYMPAN_API void AfxThrowFileException(int cause, LONG osError = -1,
                                                   const char* fileName = nullptr);

/// Throws a `CMemoryException*` made with `new` (std::bad_alloc where not even that can be had).
[[noreturn]] TYMPAN_API void AfxThrowMemoryException();
