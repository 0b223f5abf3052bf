// Page files: one page's size, and the list of the pictures that stand on it.
#pragma once

#include "core/picture_object.h"
#include "core/picture_parameters.h"
#include "page/page_entries.h"
#include "platform/export.h"

#include <memory>

namespace tympan {
struct Format;
struct PageEntryList;
/// The format's row of the list that the factory walks; for the library alone.
Format PageFormat();
} // namespace tympan

/// Header record of a page file: the common header and the page's entries.
///
/// A copy shares the list with the record that it was made of; the last of the records that share one
/// destroys it, with its entries, whatever they say of their number. `Clear()` leaves the list alone.
class TYMPAN_API PageParameters : public PictureParameters {
  public:
    /// Empty, without a list.
    PageParameters();
    /// Takes over what assignment takes over.
    PageParameters(const PageParameters& other);
    /// Takes over the common header as `PictureParameters` assigns it, the number of entries, and the
    /// list, which both then share. Assignment of a record to itself changes nothing.
    PageParameters& operator=(const PageParameters& other);
    ~PageParameters() override;

    /// Reads the common header and all entries, each of which looks at its picture's file. `RowSize`
    /// becomes the width in pixels, `BitsPerSample` 8 for each separation.
    /// \return false when the common header is refused, and then no entry is read. False with 90065
    ///   for an entry of an unknown type, one that the file ends in, one whose path gives no picture
    ///   object, and a CT window whose colours can't be made transparent in its container: the
    ///   entries in front of it stay in the list, and the number of entries is the file's.
    /// \throws CFileException* from a seek or a read of what stands outside the entries' own
    ///   fields; std::bad_alloc.
    bool Load(CFile& file) override;

    /// The number that the file counts, cut to 16 bits. The list may have fewer entries.
    unsigned short NumberOfEntries() const { return numberOfEntries_; }
    /// An entry, the record's own until the next `Load` or destruction; null for one that isn't there.
    const BasePageEntry* operator[](unsigned short index) const;

  protected:
    /// Sets the number; the list stays.
    void NumberOfEntries(unsigned short count) { numberOfEntries_ = count; }
    /// The places of the list; null without one. `LoadEntries` makes as many as the file counts and
    /// has room for, and those not yet reached are null.
    BasePageEntry** EntriesList() const;
    /// Takes over an array of `NumberOfEntries` places, made with `new[]`, and the entries in it. The
    /// list before isn't freed: it is the caller's, and copies of this record keep showing it.
    void EntriesList(BasePageEntry** entries);

    /// Gives up the list: `EntriesList` is null then.
    virtual void CleanUp();
    /// Reads the count at the file's position; what a file that ends doesn't hold counts as no text.
    /// \param buffer has room for 7 bytes, and gets the text, terminated.
    /// \throws CFileException* of a read.
    virtual void LoadNumberOfEntries(CFile& file, unsigned char* buffer);
    /// Reads the entries.
    /// \return false, with the code that stands, when an entry of unknown type meets a record that has
    ///   failed before.
    /// \throws EntryErrorException* for an entry that is refused ("Illegal entry found.\nIt may be
    ///   a shape entry, or file error!", "An error encountered validating Ct image container (lw
    ///   picture) with color table!", or as the entry says); CFileException* of a seek or a read.
    virtual bool LoadEntries(CFile& file);

  private:
    bool LoadPage(CFile& file);
    void ValidateWindow(BasePageEntry& entry) const;

    unsigned short numberOfEntries_ = 0;
    std::shared_ptr<tympan::PageEntryList> entries_;
};

/// A page file, read only. It has no rows and draws nothing: its content is the list of entries, each
/// with a picture object of its own, which a client opens by the entry's path. A page that is placed
/// on a page, itself even, is one such object that nobody has opened.
class TYMPAN_API PageFileInterface : public BasePictureIF {
  public:
    /// Closed, with a fresh `PageParameters`.
    PageFileInterface();
    ~PageFileInterface() override;

    /// Whether the file has the type letters of a page: "PG", in capitals or not.
    /// \throws CFileException* of a seek or a read.
    static bool isTypeOf(CFile& file);

    /// Opens as `BasePictureIF` does; for an input file that loads all entries. `ObjectStatus` becomes
    /// what is returned, so that a failed object is usable again after an opening that succeeds. A
    /// refused entry leaves its code on the record: `PictureParams()->TraceStatus()`.
    /// \throws CFileException* of a file that can't be read, std::bad_alloc; `ObjectStatus` is then
    ///   as it was.
    bool OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                         CFileException* fileError) override;

    /// An entry, the record's own until the next opening or destruction; closing leaves it. Null for
    /// one that isn't there.
    virtual const PagePictureEntry* GetEntry(unsigned short index) const;
    /// As `PageParameters::NumberOfEntries`.
    virtual unsigned short GetEntriesNumber() const;
};
