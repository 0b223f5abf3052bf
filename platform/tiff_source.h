// libtiff's reading of one file: the bytes come through the seam of platform/file_system.h, and the
// messages go to this thread's. In what includes this, `TIFF`, libtiff's name for what it has open,
// is declared as the same type as the record `tiff`; a `TIFF*` here always comes from libtiff and
// goes nowhere but to libtiff.
#pragma once

#include "platform/tiff_library.h"
#include "platform/tiff_messages.h"

#include <tiffio.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace tympan {

/// Where errors and warnings about one file go.
class TiffReport {
  public:
    explicit TiffReport(std::string fileName) : fileName_(std::move(fileName)) {}

    /// An operation starts: nothing has failed in it.
    void Begin() noexcept { hasFailed_ = false; }
    const std::string& FileName() const noexcept { return fileName_; }
    bool HasFailed() const noexcept { return hasFailed_; }

    void Fail(std::string_view text, int systemError = 0) noexcept
    {
        hasFailed_ = true;
        KeepTiffMessage([&] { return Named(text); }, systemError);
    }

    /// libtiff's handlers; a result but 0 keeps the handlers of the process out of it.
    static int TakeError(TIFF* open, void* report, const char* module, const char* format,
                         std::va_list arguments) noexcept;
    static int TakeWarning(TIFF* open, void* report, const char* module, const char* format,
                           std::va_list arguments) noexcept;

  private:
    std::string Named(std::string_view text) const
    {
        return std::string(fileName_).append(": ").append(text);
    }

    std::string fileName_;
    bool hasFailed_ = false;
};

enum class TiffOwner { library, caller };

/// An open file of the seam with a position of its own, as libtiff's procedures want it.
class SeamFile {
  public:
    static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

    SeamFile() noexcept = default;
    SeamFile(const SeamFile&) = delete;
    SeamFile& operator=(const SeamFile&) = delete;
    ~SeamFile();

    void Attach(int number, TiffOwner owner) noexcept
    {
        number_ = number;
        owner_ = owner;
    }

    /// The file's length, 0 where it can't be told.
    std::uint64_t Length() noexcept;
    /// Fills the buffer, or gives false.
    bool ReadAt(std::uint64_t position, std::span<std::byte> buffer) noexcept;

    /// libtiff opens what lies at the position.
    void Rewind() noexcept { position_ = 0; }
    /// Bounds what may be read from now on.
    void Allow(std::uint64_t bytes) noexcept { allowance_ = bytes; }
    /// Whether the system has failed since the last TakeError().
    bool HasFailed() const noexcept { return error_ != 0; }
    /// The errno value of the last failure of the system since the last call, 0 for none.
    int TakeError() noexcept { return std::exchange(error_, 0); }

    /// libtiff's procedures; the file is a SeamFile.
    static tmsize_t Read(thandle_t file, void* buffer, tmsize_t size) noexcept;
    static tmsize_t Write(thandle_t, void*, tmsize_t) noexcept { return -1; }
    static toff_t Seek(thandle_t file, toff_t offset, int from) noexcept;
    static toff_t Size(thandle_t file) noexcept { return static_cast<SeamFile*>(file)->Length(); }
    static int Close(thandle_t) noexcept { return 0; } // the destructor's part

  private:
    tmsize_t ReadOn(std::span<std::byte> buffer) noexcept;
    toff_t SeekTo(toff_t offset, int from) noexcept;

    int number_ = -1;
    TiffOwner owner_ = TiffOwner::caller;
    std::int64_t position_ = 0;
    std::uint64_t allowance_ = kUnlimited;
    int error_ = 0;
};

/// A file with libtiff's reading of it.
class TiffSource {
  public:
    explicit TiffSource(const char* name) : report(name) {}

    /// Has libtiff read the first directory, anew if it has before. False on failure.
    bool Open();
    void Close() noexcept { libtiff_.reset(); }
    /// Null before Open() and after it failed.
    TIFF* Get() const { return libtiff_.get(); }

    TiffReport report;
    SeamFile file;

  private:
    struct CloseLibtiff {
        void operator()(TIFF* open) const noexcept { TIFFClose(open); }
    };

    std::unique_ptr<TIFF, CloseLibtiff> libtiff_; // ends before the file that it reads
};

/// A field of the directory or its default; 0 where there is neither.
template <typename Value>
Value TiffField(TIFF* open, std::uint32_t tag)
{
    Value value = 0;
    return TIFFGetFieldDefaulted(open, tag, &value) != 0 ? value : Value{ 0 };
}

void FillRecord(tiff& record, TIFF* open);
TiffInfo InfoOf(TIFF* open, const tiff& record);

/// What has to be decoded in one piece may be this many times as long as the file: common
/// compressions of pictures stay below it.
inline constexpr std::uint64_t kMostExpansion = 64;

} // namespace tympan
