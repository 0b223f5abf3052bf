// The platform's failures: their memory, causes and texts.
#include "platform/failures.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string_view>

namespace {

// The addresses at which failures made with `new` stand.
class LivingFailures {
  public:
    void Add(const void* block)
    {
        const std::lock_guard lock(mutex_);
        blocks_.insert(block);
    }
    void Remove(const void* block)
    {
        const std::lock_guard lock(mutex_);
        blocks_.erase(block);
    }
    bool Has(const void* block)
    {
        const std::lock_guard lock(mutex_);
        return blocks_.contains(block);
    }

  private:
    std::mutex mutex_;
    std::set<const void*> blocks_;
};

LivingFailures& Living()
{
    // Never destroyed: a failure may be thrown while a program's last objects go.
    static LivingFailures& living = *std::make_unique<LivingFailures>().release();
    return living;
}

struct CauseRow {
    int cause;
    std::string_view before; // the text up to the file's name, and from there on
    std::string_view behind;
};

// The first row stands for every cause without a row of its own.
constexpr CauseRow kCauseTexts[] = {
    { CFileException::genericException, "An operation on the file ", " failed." },
    { CFileException::none, "No failure of the file ", " was told." },
    { CFileException::fileNotFound, "The file ", " was not found." },
    { CFileException::badPath, "The path of the file ", " is not valid." },
    { CFileException::tooManyOpenFiles, "The file ",
      " can't be opened: too many files are open already." },
    { CFileException::accessDenied, "Access to the file ", " was denied." },
    { CFileException::invalidFile, "The file ", " is not open." },
    { CFileException::removeCurrentDir, "The folder ", " is in use and can't be removed." },
    { CFileException::directoryFull, "The folder of the file ", " is full." },
    { CFileException::badSeek, "A place outside the file ", " was asked for." },
    { CFileException::hardIO, "The disk failed while the file ", " was read or written." },
    { CFileException::sharingViolation, "The file ", " is in use by another program." },
    { CFileException::lockViolation, "The file ", " is locked by another program." },
    { CFileException::diskFull, "The disk is full: the file ", " can't be written." },
    { CFileException::endOfFile, "The file ", " ends too soon." },
};

struct ErrnoRow {
    int error;
    int cause;
};

constexpr ErrnoRow kErrnoCauses[] = {
    { 0, CFileException::none },
    { ENOENT, CFileException::fileNotFound },
    { ENOTDIR, CFileException::badPath },
    { ENAMETOOLONG, CFileException::badPath },
    { ELOOP, CFileException::badPath },
    { EMFILE, CFileException::tooManyOpenFiles },
    { ENFILE, CFileException::tooManyOpenFiles },
    { EACCES, CFileException::accessDenied },
    { EPERM, CFileException::accessDenied },
    { EROFS, CFileException::accessDenied },
    { EISDIR, CFileException::accessDenied },
    { EEXIST, CFileException::accessDenied },
    { EBADF, CFileException::invalidFile },
    { ESPIPE, CFileException::badSeek },
    { EOVERFLOW, CFileException::badSeek },
    { EIO, CFileException::hardIO },
    { EINVAL, CFileException::hardIO },
    { ETXTBSY, CFileException::sharingViolation },
    { EBUSY, CFileException::sharingViolation },
    { EAGAIN, CFileException::lockViolation },
    { EDEADLK, CFileException::lockViolation },
    { ENOSPC, CFileException::diskFull },
    { EFBIG, CFileException::diskFull },
#if defined(EDQUOT)
    { EDQUOT, CFileException::diskFull },
#endif
};

const CauseRow& RowOf(int cause)
{
    const auto found = std::find_if(std::begin(kCauseTexts), std::end(kCauseTexts),
                                    [&](const CauseRow& row) { return row.cause == cause; });
    return found == std::end(kCauseTexts) ? kCauseTexts[0] : *found;
}

// Writes a text of pieces into a client's buffer, cut off where that ends. Allocates nothing, since
// the text may be one about memory.
class MessageBuffer {
  public:
    MessageBuffer(char* buffer, UINT size, UINT* helpContext) : room_(buffer, buffer ? size : 0)
    {
        if (helpContext)
            *helpContext = 0;
        if (!room_.empty())
            room_[0] = '\0';
    }

    std::size_t Left() const { return room_.empty() ? 0 : room_.size() - 1; }
    BOOL HasRoom() const { return Left() != 0; }

    void Append(std::string_view piece)
    {
        if (room_.empty())
            return;
        const std::size_t taken = piece.copy(room_.data(), Left());
        room_ = room_.subspan(taken);
        room_[0] = '\0';
    }

    // A name, of which the front gives way to three points where there is less room for it.
    void AppendName(std::string_view name, std::size_t room)
    {
        constexpr std::string_view kCut = "...";
        if (name.size() > room) {
            Append(kCut.substr(0, room));
            name.remove_prefix(name.size() - (room - std::min(room, kCut.size())));
        }
        Append(name);
    }

  private:
    std::span<char> room_;
};

} // namespace

CException::~CException() = default;
CMemoryException::~CMemoryException() = default;
CFileException::~CFileException() = default;

void CException::Delete() noexcept
{
    // The list holds where whole objects begin, and this may be a base somewhere inside of one.
    if (Living().Has(dynamic_cast<const void*>(this)))
        delete this;
}

void* CException::operator new(std::size_t size)
{
    void* block = ::operator new(size);
    try {
        Living().Add(block);
    } catch (...) {
        ::operator delete(block);
        throw;
    }
    return block;
}

void* CException::operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (...) {
        return nullptr;
    }
}

void CException::operator delete(void* block) noexcept
{
    Living().Remove(block);
    ::operator delete(block);
}

void CException::operator delete(void* block, const std::nothrow_t&) noexcept
{
    operator delete(block);
}

BOOL CException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const
{
    MessageBuffer(buffer, size, helpContext);
    return FALSE;
}

BOOL CMemoryException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const
{
    MessageBuffer message(buffer, size, helpContext);
    const BOOL told = message.HasRoom();
    message.Append("There is not enough memory.");
    return told;
}

CFileException::CFileException(int cause, LONG osError, const char* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName)
{}

BOOL CFileException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const
{
    MessageBuffer message(buffer, size, helpContext);
    const BOOL told = message.HasRoom();
    const CauseRow& row = RowOf(m_cause);
    const std::size_t words = row.before.size() + row.behind.size();
    const std::size_t room = message.Left() - std::min(message.Left(), words);
    message.Append(row.before);
    message.AppendName(m_strFileName.IsEmpty() ? "(unnamed)" : m_strFileName.View(), room);
    message.Append(row.behind);
    return told;
}

int CFileException::ErrnoToException(int error) noexcept
{
    const auto found = std::find_if(std::begin(kErrnoCauses), std::end(kErrnoCauses),
                                    [&](const ErrnoRow& row) { return row.error == error; });
    return found == std::end(kErrnoCauses) ? genericException : found->cause;
}

int CFileException::OsErrorToException(LONG osError) noexcept
{
    return ErrnoToException(osError);
}

void CFileException::ThrowErrno(int error, const char* fileName)
{
    AfxThrowFileException(ErrnoToException(error), error, fileName);
}

void CFileException::ThrowOsError(LONG osError, const char* fileName)
{
    AfxThrowFileException(OsErrorToException(osError), osError, fileName);
}

void AfxThrowFileException(int cause, LONG osError, const char* fileName)
{
    throw new CFileException(cause, osError, fileName);
}

void AfxThrowMemoryException()
{
    throw new CMemoryException;
}
