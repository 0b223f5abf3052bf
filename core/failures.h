// The failures that the library throws, by name. Clients catch them, so this header comes with
// <tympan/tympan.h> and the types are visible across the library's border.
#pragma once

#include "platform/export.h"
#include "platform/failures.h"
#include "platform/text.h"

#include <string_view>

/// Base of the failures that can show themselves to a user. Never thrown itself.
///
/// Which way a derived class is thrown belongs to the class and is told with it: by value, or as a
/// pointer to an object made with `new`, which the catcher destroys. A catch clause for the one
/// does not meet the other.
class TYMPAN_API LumetoException {
  public:
    /// Takes the detail that `MessageText()` gives.
    explicit LumetoException(const CString& messageText);
    /// The same; a null pointer counts as the empty text.
    explicit LumetoException(const char* messageText);
    /// @{
    /// Takes over both texts.
    LumetoException(const LumetoException&) = default;
    LumetoException& operator=(const LumetoException&) = default;
    /// @}

    /// Composes `ShownText` as the class does and shows it with `AfxMessageBox(ShownText, 0, 0)`.
    /// The base leaves `ShownText` as it is, so empty. Nothing in the library calls this: it is
    /// there for the catch clause of a client.
    virtual void ReportError();

    /// Virtual so that a catcher of the base may destroy through it what it caught.
    virtual ~LumetoException();

    /// The detail given at construction. Both references hold as long as the object.
    const CString& MessageText() const { return messageText_; }
    /// Empty until `ReportError()` composes it.
    const CString& ShownText() const { return shownText_; }

  protected:
    /// Shows `MessageText` between two texts.
    void ShowBetween(const char* before, const char* after);

  private:
    CString messageText_;
    CString shownText_;
};

/// An entry of a page file is wrong. Thrown as a pointer.
class TYMPAN_API EntryErrorException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "Page File Entry Error : DETAIL!".
    void ReportError() override;
};

/// Something could not be read. Thrown as a pointer.
class TYMPAN_API ReadFileException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "DETAIL".
    void ReportError() override;
};

/// The bytes of a picture contradict its format. Thrown as a pointer.
class TYMPAN_API FileCorruptedException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "File is corrupted! DETAIL".
    void ReportError() override;
};

/// A file could not be opened; the text is its name. Thrown as a pointer.
class TYMPAN_API OpenFileException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "File DETAIL open failed!".
    void ReportError() override;
};

/// A header record refuses its file; the text is the reason. Thrown by value.
class TYMPAN_API LoadFailedException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "Load failed because of DETAIL!".
    void ReportError() override;
};

/// A buffer was asked for with a size that it can't have; the text is its name. Thrown as a
/// pointer.
class TYMPAN_API IllegalSizeException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "Illegal DETAIL size!".
    void ReportError() override;
};

/// A buffer has no room left; the text is its name in quotes. Thrown by value.
class TYMPAN_API BufferSizeException : public LumetoException {
  public:
    using LumetoException::LumetoException;
    /// Shows "Buffer DETAIL is full and there is no room to add data!".
    void ReportError() override;
};

/// Base of the failures that are a text and no more.
class TYMPAN_API PictureFilesException {
  public:
    /// Takes the text that `Text()` gives.
    explicit PictureFilesException(const CString& text) : text_(text) {}
    /// What happened, as a sentence; holds as long as the object.
    const CString& Text() const { return text_; }

  private:
    CString text_;
};

/// A number lies outside its list. Thrown as a pointer.
class TYMPAN_API OutOfRangeException : public PictureFilesException {
  public:
    /// The text is "Out of range exception!".
    OutOfRangeException() : PictureFilesException("Out of range exception!") {}
};

/// A buffer could not be had. Thrown as a pointer.
class TYMPAN_API MemoryAllocException : public PictureFilesException {
  public:
    /// The text is "Memory allocation failed!".
    MemoryAllocException() : PictureFilesException("Memory allocation failed!") {}
};

/// A row operation was asked for something that is no separation. Thrown as a pointer.
class TYMPAN_API IllegalSeparationException {};

/// A row holds a colour index that its table does not. Thrown as a pointer; line work gives it out
/// under the name of its own class.
class TYMPAN_API IllegalColorIndexException {};

/// A range of rows lies outside its picture. Thrown by value.
class TYMPAN_API IllegalRowsException {};

namespace tympan {

/// The tail of the two texts below.
inline constexpr char kReadingStopped[] = " The reading is stopped!";
/// The text of the `ReadFileException` of a short read.
inline constexpr char kUnexpectedEndOfFile[] =
    "Unexpected end of file encountered! The reading is stopped!";
/// That of a full buffer.
inline constexpr char kGivenBufferTooSmall[] = "Given buffer is too small! The reading is stopped!";
static_assert(std::string_view(kUnexpectedEndOfFile).ends_with(kReadingStopped));
static_assert(std::string_view(kGivenBufferTooSmall).ends_with(kReadingStopped));

} // namespace tympan
