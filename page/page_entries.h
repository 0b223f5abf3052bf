// The entries of a page file: each places one picture on the page, by path, offset, size and turn.
#pragma once

#include "core/failure_trace.h"
#include "core/picture_object.h"
#include "platform/export.h"
#include "platform/text.h"

#include <array>
#include <cstddef>
#include <memory>

class CFile;

namespace tympan {
struct PageEntryAccess;
struct SharedPicture;
} // namespace tympan

/// What all entries of a page have. An entry is made by `create_page_entry_object`, filled once by
/// `Load`, and owned by the record of its page.
class TYMPAN_API BasePageEntry {
  public:
    /// @{
    /// With offsets of 0, or those of the other, and its code.
    BasePageEntry();
    BasePageEntry(const BasePageEntry& other);
    BasePageEntry& operator=(const BasePageEntry& other);
    /// @}
    virtual ~BasePageEntry();

    /// Reads the entry on from behind its type byte. \return whether it is loaded.
    virtual bool Load(CFile& file) = 0;

    /// @{
    /// As the file has them, without a unit; this library takes them as inches, from the page's
    /// left and upper edge.
    double XOffset() const { return xOffset_; }
    double YOffset() const { return yOffset_; }
    /// @}

    /// @{
    /// The code of the entry's last failure: 0 or 90001.
    unsigned long TraceStatus() const { return trace_.Status(); }
    void TraceStatus(unsigned long status) { trace_.Status(status); }
    /// @}

  protected:
    /// Reads the Y offset and the X offset. A file that ends gives the number that is left of the
    /// text, 0 when nothing is.
    /// \throws CFileException* of a read.
    virtual void LoadOffsets(CFile& file);

    /// @{
    /// Sets what the public one of the name tells.
    void XOffset(double offset) { xOffset_ = offset; }
    void YOffset(double offset) { yOffset_ = offset; }
    /// @}

    /// For the failure tables of derived entries.
    tympan::FailureTrace& Failures() { return trace_; }

  private:
    tympan::FailureTrace trace_;
    double xOffset_ = 0.0;
    double yOffset_ = 0.0;
};

/// An entry with a picture. It owns a picture object of the path's format, which it doesn't open: a
/// client calls `OpenPictureFile` on it with `PictureFileName()`.
///
/// A copy shares the picture object with the entry that it was made of; the last of the entries that
/// share one destroys it.
class TYMPAN_API PagePictureEntry : public BasePageEntry {
  public:
    /// @{
    /// Without a picture, or as the class tells of copies.
    PagePictureEntry();
    PagePictureEntry(const PagePictureEntry& other);
    PagePictureEntry& operator=(const PagePictureEntry& other);
    /// @}
    ~PagePictureEntry() override;

    /// Reads the entry and makes its picture object by `create_picture_object`.
    /// \return false when the file can't be read, or the path gives no picture object; no code is
    ///   left.
    /// \throws EntryErrorException* when the file ends inside the entry: "Error reading entry
    ///   data:\nUnexpected end of file!" in path or window, "An error reading parameters (height,
    ///   width, etc.) from entry!" in its numbers; std::bad_alloc.
    bool Load(CFile& file) override;

    /// Called behind the path; reads what an entry has in front of its offsets, here nothing.
    /// \return false to end the loading, which then gives false.
    virtual bool LoadDummy(CFile& file);
    /// Called behind the angle; reads what an entry has there, here nothing.
    /// \return what the loading then gives.
    virtual bool LoadSpecific(CFile& file);

    /// The path from the file, blanks at its end included.
    const CString& PictureFileName() const { return pictureFileName_; }
    /// The picture object, the entry's own; null before the loading and when it failed.
    BasePictureIF* PictureHandle() const;

    /// Reads one byte. \return the byte; 0 at the file's end, and with 90001 when it can't be read.
    unsigned char getEntryType(CFile& file);
    /// Whether the next byte of the file is the type of such an entry.
    bool isTypeOf(CFile& file);
    /// Whether the byte is the type of a `PagePictureEntry`.
    bool isTypeOf(const unsigned char& type);

  protected:
    /// Sets the path.
    void PictureFileName(const CString& name) { pictureFileName_ = name; }
    /// Takes over a picture object. The one before isn't destroyed: it is the caller's, and copies of
    /// this entry keep showing it.
    void PictureHandle(BasePictureIF* picture);

    /// @{
    /// As the file has them, sizes and angle without a unit. This library takes the sizes, which
    /// are those before the turn, as inches, and the angle as degrees counterclockwise.
    double PictureSupposedHeight() const { return supposedHeight_; }
    void PictureSupposedHeight(double height) { supposedHeight_ = height; }
    double PictureSupposedWidth() const { return supposedWidth_; }
    void PictureSupposedWidth(double width) { supposedWidth_ = width; }
    double PictureRotationAngle() const { return rotationAngle_; }
    void PictureRotationAngle(double angle) { rotationAngle_ = angle; }
    /// @}

    /// @{
    /// Reads the field at the file's position.
    /// \throws EntryErrorException* when the file ends in it; CFileException* of a read.
    void LoadPictureName(CFile& file);
    void LoadPictureSupposedHeight(CFile& file);
    void LoadPictureSupposedWidth(CFile& file);
    void LoadPictureRotationAngle(CFile& file);
    /// @}

  private:
    friend struct tympan::PageEntryAccess;

    bool LoadFields(CFile& file);

    CString pictureFileName_;
    double supposedHeight_ = 0.0;
    double supposedWidth_ = 0.0;
    double rotationAngle_ = 0.0;
    std::shared_ptr<tympan::SharedPicture> picture_;
};

/// An entry with an LW picture, whose fields stand two bytes further on behind the path.
class PageLWEntry : public PagePictureEntry {
  public:
    /// @{
    /// As the base.
    PageLWEntry();
    PageLWEntry(const PageLWEntry& other);
    PageLWEntry& operator=(const PageLWEntry& other);
    /// @}
    ~PageLWEntry() override;

    /// Passes over the two bytes. \return false when the file can't be read.
    bool LoadDummy(CFile& file) override;

    using PagePictureEntry::isTypeOf;
    /// Whether the next byte of the file is the type of such an entry.
    bool isTypeOf(CFile& file);
};

/// An entry with a picture that shows through some colours of an LW picture, its container: the
/// picture of another entry of the page.
class PageCTWindowEntry : public PagePictureEntry {
  public:
    /// Bytes of `Colors`, the zero byte included.
    static constexpr std::size_t kColors = 32;

    /// @{
    /// As the base; container and colours are copied.
    PageCTWindowEntry();
    PageCTWindowEntry(const PageCTWindowEntry& other);
    PageCTWindowEntry& operator=(const PageCTWindowEntry& other);
    /// @}
    ~PageCTWindowEntry() override;

    /// Reads the container and the colours up to their zero byte. Of more colours than `Colors` has
    /// room for the first 31 are kept. A list without a zero byte ends with the entry's 256 bytes.
    /// \return false when the file can't be read.
    /// \throws EntryErrorException* when the file ends in them.
    bool LoadSpecific(CFile& file) override;

    /// Makes the colours transparent in the container. A picture that is no LW picture, null
    /// included, or has transparent colours of its own, stays as it is. Colours for which the
    /// picture's table has no row are passed over.
    /// \return false when a colour can't be made transparent, for no ink value is free.
    bool ValidateContainer(BasePictureIF* picture);

    /// How many colours there are, 0 to 31.
    unsigned short NumberOfColors() const { return numberOfColors_; }
    /// Place in the page's list of the container's entry; 65535 before the loading.
    unsigned short ContainerEntry() const { return containerEntry_; }
    /// `NumberOfColors` numbers and a zero byte; the entry's own.
    const unsigned char* Colors() const { return colors_.data(); }

    using PagePictureEntry::isTypeOf;
    /// Whether the next byte of the file is the type of such an entry.
    bool isTypeOf(CFile& file);

  private:
    void LoadWindow(CFile& file);

    unsigned short numberOfColors_ = 0;
    unsigned short containerEntry_ = 65535;
    std::array<unsigned char, kColors> colors_{};
};

/// Reads one byte, the type of an entry, and makes the entry; the file then stands where `Load` of
/// the entry expects it.
/// \return an entry that the caller destroys; null for an unknown type, a file that can't be read or
///   has ended, and when memory ran out.
TYMPAN_API BasePageEntry* create_page_entry_object(CFile& file);
/// The same for a type that has been read.
TYMPAN_API BasePageEntry* create_page_entry_object(const unsigned char& type);
