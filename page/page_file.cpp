// Recognising and opening page files, and the list of entries that the record owns.
#include "page/page_file.h"

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/format.h"
#include "core/header_text.h"
#include "core/whole_numbers.h"
#include "page/page_check.h"
#include "page/page_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace {

constexpr tympan::FailureRow kEntryRefused[] = {
    { tympan::Caught::EntryError, tympan::code::kPageEntryRefused, nullptr },
};

constexpr char kIllegalEntry[] = "Illegal entry found.\nIt may be a shape entry, or file error!";
constexpr char kContainerRefused[] =
    "An error encountered validating Ct image container (lw picture) with color table!";

constexpr unsigned int kBitsOfSeparation = 8;

bool IsLetter(char letter, char capital)
{
    return letter == capital || letter == capital - 'A' + 'a';
}

} // namespace

// The places of the list and the entries in them.
struct tympan::PageEntryList {
    PageEntryList(std::unique_ptr<BasePageEntry*[]> taken, std::size_t count)
        : size(count), entries(taken.get()), owned(std::move(taken))
    {}
    PageEntryList(const PageEntryList&) = delete;
    PageEntryList& operator=(const PageEntryList&) = delete;
    ~PageEntryList()
    {
        if (owned != nullptr)
            std::for_each(entries, entries + size, std::default_delete<BasePageEntry>());
    }

    std::size_t size;
    BasePageEntry** entries;
    std::unique_ptr<BasePageEntry*[]> owned; // null once a record has given the array up
};

// ---- the record

PageParameters::PageParameters() = default;
PageParameters::PageParameters(const PageParameters& other) = default;
PageParameters& PageParameters::operator=(const PageParameters& other) = default;
PageParameters::~PageParameters() = default;

bool PageParameters::Load(CFile& file)
{
    bool loaded = false;
    tympan::Guarded(Failures(), kEntryRefused, [&] { loaded = LoadPage(file); });
    return loaded;
}

bool PageParameters::LoadPage(CFile& file)
{
    if (!PictureParameters::Load(file))
        return false;
    std::array<unsigned char, tympan::kPageCount.width + 1> buffer{};
    LoadNumberOfEntries(file, buffer.data());
    const bool loaded = LoadEntries(file);
    RowSize(tympan::CutToWhole<unsigned int>(WidthInPixels()));
    BitsPerSample(NumberOfSeparations() * kBitsOfSeparation);
    return loaded;
}

void PageParameters::LoadNumberOfEntries(CFile& file, unsigned char* buffer)
{
    std::fill_n(buffer, tympan::kPageCount.width + 1, static_cast<unsigned char>(0));
    file.Read(buffer, static_cast<UINT>(tympan::kPageCount.width));
    const std::string_view text(reinterpret_cast<const char*>(buffer), tympan::kPageCount.width);
    numberOfEntries_ =
        static_cast<unsigned short>(tympan::CutToWhole<std::int32_t>(tympan::WholeFromText(text)));
}

bool PageParameters::LoadEntries(CFile& file)
{
    CleanUp();
    const std::size_t room =
        numberOfEntries_ == 0
            ? 0
            : std::min<std::size_t>(numberOfEntries_, tympan::RoomForPageEntries(file));
    entries_ =
        std::make_shared<tympan::PageEntryList>(std::make_unique<BasePageEntry*[]>(room), room);
    for (unsigned short i = 0; i < numberOfEntries_; ++i) {
        file.Seek(static_cast<LONGLONG>(tympan::PlaceOfPageEntry(i)), CFile::begin);
        unsigned char type = 0;
        file.Read(&type, sizeof type);
        std::unique_ptr<BasePageEntry> entry(create_page_entry_object(type));
        if (entry == nullptr && TraceStatus() != 0)
            return false;
        if (entry == nullptr || !entry->Load(file) || i >= room)
            throw new EntryErrorException(kIllegalEntry);
        EntriesList()[i] = entry.release();
        ValidateWindow(*EntriesList()[i]);
    }
    return true;
}

void PageParameters::ValidateWindow(BasePageEntry& entry) const
{
    auto* const window = dynamic_cast<PageCTWindowEntry*>(&entry);
    if (window == nullptr)
        return;
    const auto* const container =
        dynamic_cast<const PagePictureEntry*>((*this)[window->ContainerEntry()]);
    if (!window->ValidateContainer(container == nullptr ? nullptr : container->PictureHandle()))
        throw new EntryErrorException(kContainerRefused);
}

void PageParameters::CleanUp()
{
    entries_.reset();
}

const BasePageEntry* PageParameters::operator[](unsigned short index) const
{
    const bool isThere = index < numberOfEntries_ && entries_ != nullptr && index < entries_->size;
    return isThere ? entries_->entries[index] : nullptr;
}

BasePageEntry** PageParameters::EntriesList() const
{
    return entries_ == nullptr ? nullptr : entries_->entries;
}

void PageParameters::EntriesList(BasePageEntry** entries)
{
    if (entries == EntriesList())
        return;
    std::unique_ptr<BasePageEntry*[]> owned(entries);
    const auto taken =
        entries == nullptr
            ? nullptr
            : std::make_shared<tympan::PageEntryList>(std::move(owned), numberOfEntries_);
    if (entries_ != nullptr)
        static_cast<void>(entries_->owned.release());
    entries_ = taken;
}

// ---- the picture object

PageFileInterface::PageFileInterface()
{
    PictureParams(new PageParameters);
}

PageFileInterface::~PageFileInterface() = default;

bool PageFileInterface::isTypeOf(CFile& file)
{
    std::array<char, tympan::kHeaderFileType.width> letters{};
    file.Seek(tympan::kHeaderFileType.offset, CFile::begin);
    file.Read(letters.data(), static_cast<UINT>(letters.size()));
    return std::equal(letters.begin(), letters.end(), tympan::kPageLetters.begin(), IsLetter);
}

bool PageFileInterface::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                        CFileException* fileError)
{
    const bool opened = BasePictureIF::OpenPictureFile(fileName, inputFile, reopen, fileError);
    ObjectStatus(opened);
    return opened;
}

const PagePictureEntry* PageFileInterface::GetEntry(unsigned short index) const
{
    const auto* const record = dynamic_cast<const PageParameters*>(PictureParams());
    return record == nullptr ? nullptr : dynamic_cast<const PagePictureEntry*>((*record)[index]);
}

unsigned short PageFileInterface::GetEntriesNumber() const
{
    const auto* const record = dynamic_cast<const PageParameters*>(PictureParams());
    return record == nullptr ? static_cast<unsigned short>(0) : record->NumberOfEntries();
}

tympan::Format tympan::PageFormat()
{
    return {
        .name = "Page",
        .recognises = [](CFile& file, const CString&) { return PageFileInterface::isTypeOf(file); },
        .make = [] { return std::unique_ptr<BasePictureIF>(new PageFileInterface); },
        .check = PageFileCheck(),
        .typeLetters = kPageLetters,
    };
}
