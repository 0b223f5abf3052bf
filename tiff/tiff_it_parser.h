// The structure of TIFF/IT P1 files: header, directories (IFDs) and their values, read without the
// TIFF library. The two picture classes stand on it.
#pragma once

#include "core/row_access.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace tympan {
struct TiffItAccess;
}

/// A field of a directory.
struct IfdEntry {
    /// The values by `Type`: bytes (1, 2), 16 bits (3), 32 bits (4), doubles (5).
    using Values =
        std::variant<std::monostate, std::vector<std::uint8_t>, std::vector<std::uint16_t>,
                     std::vector<std::uint32_t>, std::vector<double>>;

    /// @{
    /// Without values, or with those of the other.
    IfdEntry() = default;
    IfdEntry(const IfdEntry&) = default;
    IfdEntry(IfdEntry&&) noexcept = default;
    IfdEntry& operator=(const IfdEntry&) = default;
    IfdEntry& operator=(IfdEntry&&) noexcept = default;
    /// @}
    virtual ~IfdEntry();

    std::uint16_t Tag = 0;         ///< what the field is
    std::uint16_t Type = 0;        ///< of its values
    std::uint32_t Count = 0;       ///< of its values
    std::uint32_t ValueOffset = 0; ///< in the file; 0 for values that stand inside the entry
    Values Data;                   ///< the values
};

/// A directory. The records of a file share one list of fields, of which each shows those up to its
/// own end: a later directory has the fields of the earlier ones in front of its own.
struct IfdEntries {
    /// Shows all that the list has now; fields that are added later belong to later directories.
    IfdEntries(std::uint16_t numberOfEntries, std::shared_ptr<const std::vector<IfdEntry>> list,
               std::uint32_t nextIfdOffset);
    /// @{
    /// Shares the list.
    IfdEntries(const IfdEntries&) = default;
    IfdEntries& operator=(const IfdEntries&) = default;
    /// @}
    virtual ~IfdEntries();

    /// The fields; they hold as long as a record of the file does.
    std::span<const IfdEntry> Entries() const { return { list_->data(), shown_ }; }

    std::uint16_t NumberOfEntries; ///< of this directory alone
    std::uint32_t NextIfdOffset;   ///< 0 for the last one

  private:
    std::shared_ptr<const std::vector<IfdEntry>> list_;
    std::size_t shown_;
};

/// Where a strip stands.
struct StripInfo {
    std::uint32_t Offset = 0;                ///< in the file
    std::uint32_t RowsPerStrip = 0xFFFFFFFF; ///< as the file says; this value where it doesn't
    std::uint32_t ByteCount = 0;             ///< as the file says
};

/// What the two TIFF/IT picture classes share: opening a file and reading its structure. Of its
/// record only the size in pixels is set.
///
/// What is read is kept once for all objects: a client has one TIFF/IT object at a time, in one
/// thread. A further object's constructor or opening replaces what the first has read; its display then
/// draws that.
class TiffItP1Interface : public PictureFileInterface {
  public:
    /// Forgets the strips.
    ~TiffItP1Interface() override;

    /// Opens a file and reads its structure; whether it is of the object's kind is not asked.
    /// The bare name of the file that is open, with `reopen` false, is answered with true at once, but
    /// the strips are forgotten. `inputFile` has no effect: it is always read.
    /// \param fileError may be null; when given, an opening of the file that fails throws it, filled.
    /// \return false, and `ObjectStatus` false, when the file can't be opened. False with a code,
    ///   and the file still open, for a structure that can't be read: 90052 where it is cut short,
    ///   90056 for another version than 42, 90057 for a first directory at an odd offset, 90058 for
    ///   an unknown type of values, 90001 for a read that fails, 90050 for a chain of directories
    ///   without an end and for more directories, fields or values than the file has room for.
    ///   There is no text, but of a read that fails the platform's message in `TraceStatusString`.
    /// \throws CFileException* of a read between the values; std::bad_alloc.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

  protected:
    /// Closed; forgets sizes and strips.
    TiffItP1Interface();

    /// Reads the 8 bytes at the file's position. \return false with a code.
    bool ReadHeader(CFile& file);
    /// Replaces the directories by those of the file. \return false with a code.
    /// \throws CFileException* of a read between the values; std::bad_alloc.
    bool ReadIfds(CFile& file);
    /// Reads header and directories from the file's position, which should be 0, on.
    /// \return 0 for CT, 1 for LW, 2 for neither: with 90053 when the field BitsPerSample of the first
    ///   directory has another number of values than 4 or 1, without a code when there is no such field.
    ///   Also 2 for an object that has a code already.
    unsigned long DetectTiffItType(CFile& file);

    /// The strips that `Display` goes through: as many as the file counts and the table holds.
    static std::span<const StripInfo> Strips();

    static std::uint16_t m_ByteOrder;      ///< 0x4D4D: the high byte first; any other: the low one
    static std::uint32_t m_FirstIfdOffset; ///< in the file
    static std::uint32_t m_ImageWidth;     ///< in pixels; 0 where the file doesn't tell
    static std::uint32_t m_ImageLength;    ///< in pixels; 0 where the file doesn't tell
    static std::uint32_t m_StripCount;     ///< as the field of the strips' offsets counts them
    /// The strips, as many as the first of their fields has values; none without such a field.
    static std::optional<std::vector<StripInfo>> m_Strips;
    static std::vector<IfdEntries> m_Ifds;   ///< the directories, in the order of their chain
    static std::uint32_t m_PreviousIfdCount; ///< of the file before

  private:
    friend struct tympan::TiffItAccess;

    struct Chain;

    static void ForgetSizes();
    bool Fail(unsigned long code);
    bool ReadIfd(CFile& file, Chain& chain);
    bool ReadEntry(CFile& file, std::span<const std::byte> bytes, Chain& chain);
    bool ReadValues(CFile& file, std::span<const std::byte> bytes, IfdEntry& entry, Chain& chain);
    bool ReadOffsetValues(CFile& file, IfdEntry& entry, std::uint64_t size);
    bool DecodeValues(std::span<const std::byte> bytes, IfdEntry& entry);
    static void StoreField(const IfdEntry& entry);
};

namespace tympan {

/// The rows of both TIFF/IT picture classes: there are none.
class TYMPAN_API TiffItWithoutRows : public TiffItP1Interface {
  public:
    /// \name Rows
    /// There are none. \return null or 0, without a code.
    /// @{

    /// Null.
    PictureRowsData* GetPictureRow(const ColorSeparationType& separation, unsigned int row,
                                   double scanAxisResolution, double xScanAxisResolution) override;
    /// 0.
    unsigned long GetPictureRow(unsigned char* buffer, unsigned int row,
                                ColorSeparationType separation, double scanAxisResolution,
                                double xScanAxisResolution, unsigned long bufferSize) override;
    /// Null.
    PictureRowsData* GetPictureRows(const ColorSeparationType& separation, unsigned int firstRow,
                                    unsigned int lastRow, bool wrap) override;
    /// 0.
    unsigned long GetPictureRows(unsigned char* buffer, unsigned int firstRow, unsigned int lastRow,
                                 unsigned int& rowsInfo, unsigned long* offsets,
                                 ColorSeparationType separation, unsigned long bufferSize,
                                 bool wrap) override;
    /// @}

  protected:
    /// As the base.
    TiffItWithoutRows() = default;

  private:
    static unsigned long RowPosition(unsigned int row, ColorSeparationType separation);
};

} // namespace tympan
