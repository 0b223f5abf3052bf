// The platform's file class on the seam.
#include "platform/file.h"

#include "platform/file_system.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace {

constexpr std::int64_t kLargestPosition = std::numeric_limits<std::int64_t>::max();

// The mode that the flags tell, none for one that there isn't.
std::optional<tympan::OpenMode> ModeOf(UINT flags)
{
    constexpr UINT kAccessBits = 0x3;
    constexpr UINT kSharingBits = 0x70;
    constexpr tympan::Access kAccess[] = { tympan::Access::read, tympan::Access::write,
                                           tympan::Access::readWrite };
    const UINT access = flags & kAccessBits;
    if (access >= std::size(kAccess))
        return std::nullopt;
    const bool deniesWriting = (flags & kSharingBits) == CFile::shareDenyWrite;
    return tympan::OpenMode{ kAccess[access], (flags & CFile::modeCreate) != 0,
                             deniesWriting ? tympan::Sharing::readersOnly : tympan::Sharing::all };
}

tympan::IoResult OpenResolved(const CString& path, tympan::OpenMode mode)
{
    const std::optional<CString> resolved = tympan::ResolvePath(path);
    return resolved ? tympan::CurrentFileSystem().Open(*resolved, mode)
                    : tympan::IoResult::Failed(ENOENT);
}

// The system's path, for an operation that throws.
CString ResolvedOrThrow(const char* path)
{
    const std::optional<CString> resolved = tympan::ResolvePath(path);
    if (!resolved)
        CFileException::ThrowErrno(ENOENT, path);
    return *resolved;
}

} // namespace

CFile::CFile(const char* path, UINT flags)
{
    const int error = OpenForErrno(path, flags);
    if (error != 0)
        CFileException::ThrowErrno(error, path);
}

CFile::~CFile()
{
    CloseForErrno();
}

BOOL CFile::Open(const char* path, UINT flags, CFileException* error)
{
    const int failure = OpenForErrno(path, flags);
    if (failure == 0)
        return TRUE;
    if (error) {
        error->m_cause = CFileException::ErrnoToException(failure);
        error->m_lOsError = failure;
        error->m_strFileName = path;
    }
    return FALSE;
}

int CFile::OpenForErrno(const char* path, UINT flags)
try {
    CString named(path); // before closing: the path may be this file's own
    CloseForErrno();
    const std::optional<tympan::OpenMode> mode = ModeOf(flags);
    if (!mode)
        return EINVAL;
    const tympan::IoResult opened = OpenResolved(named, *mode);
    if (!opened)
        return opened.error;
    m_hFile = static_cast<int>(opened.value);
    path_ = std::move(named);
    position_ = 0;
    readable_ = mode->access != tympan::Access::write;
    writable_ = mode->access != tympan::Access::read;
    return 0;
} catch (const std::bad_alloc&) {
    return ENOMEM; // no room for the name
}

int CFile::CloseForErrno() noexcept
{
    if (m_hFile == hFileNull)
        return 0;
    const tympan::IoResult closed = tympan::CurrentFileSystem().Close(m_hFile);
    m_hFile = hFileNull;
    return closed.error;
}

UINT CFile::Read(void* buffer, UINT count)
{
    RequireReadable();
    const auto most =
        static_cast<std::size_t>(std::min(std::int64_t{ count }, kLargestPosition - position_));
    const tympan::IoResult read = tympan::CurrentFileSystem().ReadAt(
        m_hFile, std::span(static_cast<std::byte*>(buffer), most), position_);
    if (!read)
        Throw(read.error);
    position_ += read.value;
    return static_cast<UINT>(read.value);
}

void CFile::Write(const void* buffer, UINT count)
{
    RequireWritable();
    if (count > kLargestPosition - position_)
        Throw(EFBIG);
    const tympan::IoResult written = tympan::CurrentFileSystem().WriteAt(
        m_hFile, std::span(static_cast<const std::byte*>(buffer), count), position_);
    if (!written)
        Throw(written.error);
    position_ += count;
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from)
{
    RequireOpen();
    const std::int64_t start = StartOf(from);
    const bool isOutside = offset < 0 ? offset < -start : offset > kLargestPosition - start;
    if (isOutside)
        AfxThrowFileException(CFileException::badSeek, EINVAL, path_);
    position_ = start + offset;
    return static_cast<ULONGLONG>(position_);
}

std::int64_t CFile::StartOf(UINT from) const
{
    switch (from) {
    case begin: return 0;
    case current: return position_;
    case end: return Length();
    default: AfxThrowFileException(CFileException::badSeek, EINVAL, path_);
    }
}

std::int64_t CFile::Length() const
{
    const tympan::IoResult size = tympan::CurrentFileSystem().Size(m_hFile);
    if (!size)
        Throw(size.error);
    return size.value;
}

ULONGLONG CFile::GetPosition() const
{
    RequireOpen();
    return static_cast<ULONGLONG>(position_);
}

ULONGLONG CFile::GetLength() const
{
    RequireOpen();
    return static_cast<ULONGLONG>(Length());
}

void CFile::SetLength(ULONGLONG length)
{
    RequireWritable();
    if (length > static_cast<ULONGLONG>(kLargestPosition))
        Throw(EFBIG);
    const tympan::IoResult cut =
        tympan::CurrentFileSystem().Truncate(m_hFile, static_cast<std::int64_t>(length));
    if (!cut)
        Throw(cut.error);
}

void CFile::Flush()
{
    RequireOpen();
    if (!writable_)
        return;
    const tympan::IoResult flushed = tympan::CurrentFileSystem().Flush(m_hFile);
    if (!flushed)
        Throw(flushed.error);
}

void CFile::Close()
{
    const int error = CloseForErrno();
    if (error != 0)
        Throw(error);
}

void CFile::Remove(const char* path)
{
    const tympan::IoResult removed = tympan::CurrentFileSystem().Remove(ResolvedOrThrow(path));
    if (!removed)
        CFileException::ThrowErrno(removed.error, path);
}

void CFile::Rename(const char* oldPath, const char* newPath)
{
    const CString from = ResolvedOrThrow(oldPath);
    const tympan::IoResult renamed =
        tympan::CurrentFileSystem().Rename(from, ResolvedOrThrow(newPath));
    if (!renamed)
        CFileException::ThrowErrno(renamed.error, oldPath);
}

CString CFile::GetFileTitle() const
{
    const CString path = GetFilePath();
    return path.Mid(std::max(path.ReverseFind('/'), path.ReverseFind('\\')) + 1);
}

CString CFile::GetFilePath() const
{
    return m_hFile == hFileNull ? CString() : path_;
}

void CFile::RequireOpen() const
{
    if (m_hFile == hFileNull)
        CFileException::ThrowErrno(EBADF);
}

void CFile::RequireReadable() const
{
    RequireOpen();
    if (!readable_)
        Throw(EACCES);
}

void CFile::RequireWritable() const
{
    RequireOpen();
    if (!writable_)
        Throw(EACCES);
}

void CFile::Throw(int error) const
{
    CFileException::ThrowErrno(error, path_);
}
