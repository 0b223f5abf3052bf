// Reading the entries of a page file, field by field in their order there.
#include "page/page_entries.h"

#include "core/create_opened.h"
#include "core/factory.h"
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/header_text.h"
#include "lw/lw_file.h"
#include "page/page_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

struct tympan::SharedPicture {
    explicit SharedPicture(std::unique_ptr<BasePictureIF> picture)
        : object(picture.get()), owned(std::move(picture))
    {}

    BasePictureIF* object;
    std::unique_ptr<BasePictureIF> owned; // null once an entry has given the object up
};

namespace {

using tympan::Caught;
using tympan::FailureRow;
using tympan::PlacementType;

constexpr char kEndInEntry[] = "Error reading entry data:\nUnexpected end of file!";
constexpr char kEndInNumbers[] = "An error reading parameters (height, width, etc.) from entry!";

constexpr FailureRow kNotRead[] = { { Caught::Platform, 0, nullptr } };
constexpr FailureRow kTypeNotRead[] = { { Caught::File, tympan::code::kFileFailed, nullptr } };

struct FieldText {
    std::array<char, tympan::kEntryPath.width> bytes{};
    std::size_t width = 0;
    bool isWhole = false;

    std::string_view View() const { return { bytes.data(), width }; }
};

// What the file doesn't hold reads as zero bytes.
FieldText ReadField(CFile& file, std::size_t width)
{
    FieldText field;
    field.width = width;
    field.isWhole = file.Read(field.bytes.data(), static_cast<UINT>(width)) == width;
    return field;
}

double ReadOffset(CFile& file)
{
    return tympan::FloatFromText(ReadField(file, tympan::kFloatTextBytes).View());
}

double ReadNumber(CFile& file)
{
    const FieldText field = ReadField(file, tympan::kFloatTextBytes);
    if (!field.isWhole)
        throw new EntryErrorException(kEndInNumbers);
    return tympan::FloatFromText(field.View());
}

bool Is(unsigned char typeByte, PlacementType type)
{
    return typeByte == static_cast<unsigned char>(type);
}

std::unique_ptr<BasePageEntry> MakeEntry(unsigned char typeByte)
{
    const auto type = tympan::PlacementTypeOf(typeByte);
    if (!type)
        return nullptr;
    switch (*type) {
    case PlacementType::picture: return std::make_unique<PagePictureEntry>();
    case PlacementType::ctWindow: return std::make_unique<PageCTWindowEntry>();
    case PlacementType::lineWork: return std::make_unique<PageLWEntry>();
    }
    return nullptr;
}

} // namespace

// ---- what all entries have

BasePageEntry::BasePageEntry() = default;
BasePageEntry::BasePageEntry(const BasePageEntry& other) = default;
BasePageEntry& BasePageEntry::operator=(const BasePageEntry& other) = default;
BasePageEntry::~BasePageEntry() = default;

void BasePageEntry::LoadOffsets(CFile& file)
{
    yOffset_ = ReadOffset(file);
    xOffset_ = ReadOffset(file);
}

// ---- a picture

PagePictureEntry::PagePictureEntry() = default;
PagePictureEntry::PagePictureEntry(const PagePictureEntry& other) = default;
PagePictureEntry& PagePictureEntry::operator=(const PagePictureEntry& other) = default;
PagePictureEntry::~PagePictureEntry() = default;

bool PagePictureEntry::Load(CFile& file)
{
    picture_.reset();
    bool loaded = false;
    tympan::Guarded(tympan::NoTrace(), kNotRead, [&] { loaded = LoadFields(file); });
    if (!loaded)
        return false;
    PictureHandle(create_picture_object(pictureFileName_));
    return PictureHandle() != nullptr && PictureHandle()->ObjectStatus();
}

bool PagePictureEntry::LoadFields(CFile& file)
{
    ReadField(file, tympan::kEntryUnread.width);
    LoadPictureName(file);
    if (!LoadDummy(file))
        return false;
    LoadOffsets(file);
    LoadPictureSupposedHeight(file);
    LoadPictureSupposedWidth(file);
    LoadPictureRotationAngle(file);
    return LoadSpecific(file);
}

bool PagePictureEntry::LoadDummy(CFile&)
{
    return true;
}

bool PagePictureEntry::LoadSpecific(CFile&)
{
    return true;
}

void PagePictureEntry::LoadPictureName(CFile& file)
{
    const FieldText field = ReadField(file, tympan::kEntryPath.width);
    if (!field.isWhole)
        throw new EntryErrorException(kEndInEntry);
    pictureFileName_ = tympan::EntryPathIn(field.View());
}

void PagePictureEntry::LoadPictureSupposedHeight(CFile& file)
{
    supposedHeight_ = ReadNumber(file);
}

void PagePictureEntry::LoadPictureSupposedWidth(CFile& file)
{
    supposedWidth_ = ReadNumber(file);
}

void PagePictureEntry::LoadPictureRotationAngle(CFile& file)
{
    rotationAngle_ = ReadNumber(file);
}

BasePictureIF* PagePictureEntry::PictureHandle() const
{
    return picture_ == nullptr ? nullptr : picture_->object;
}

void PagePictureEntry::PictureHandle(BasePictureIF* picture)
{
    if (picture == PictureHandle())
        return;
    std::unique_ptr<BasePictureIF> owned(picture);
    const auto taken =
        owned == nullptr ? nullptr : std::make_shared<tympan::SharedPicture>(std::move(owned));
    if (picture_ != nullptr)
        static_cast<void>(picture_->owned.release());
    picture_ = taken;
}

unsigned char PagePictureEntry::getEntryType(CFile& file)
{
    unsigned char type = 0;
    tympan::Guarded(Failures(), kTypeNotRead, [&] { file.Read(&type, sizeof type); });
    return type;
}

bool PagePictureEntry::isTypeOf(CFile& file)
{
    return isTypeOf(getEntryType(file));
}

bool PagePictureEntry::isTypeOf(const unsigned char& type)
{
    return Is(type, PlacementType::picture);
}

// ---- an LW picture

PageLWEntry::PageLWEntry() = default;
PageLWEntry::PageLWEntry(const PageLWEntry& other) = default;
PageLWEntry& PageLWEntry::operator=(const PageLWEntry& other) = default;
PageLWEntry::~PageLWEntry() = default;

bool PageLWEntry::LoadDummy(CFile& file)
{
    return tympan::Guarded(tympan::NoTrace(), kNotRead,
                           [&] { ReadField(file, tympan::kLineWorkShift); });
}

bool PageLWEntry::isTypeOf(CFile& file)
{
    return Is(getEntryType(file), PlacementType::lineWork);
}

// ---- a CT window

PageCTWindowEntry::PageCTWindowEntry() = default;
PageCTWindowEntry::PageCTWindowEntry(const PageCTWindowEntry& other) = default;
PageCTWindowEntry& PageCTWindowEntry::operator=(const PageCTWindowEntry& other) = default;
PageCTWindowEntry::~PageCTWindowEntry() = default;

bool PageCTWindowEntry::LoadSpecific(CFile& file)
{
    return tympan::Guarded(tympan::NoTrace(), kNotRead, [&] { LoadWindow(file); });
}

void PageCTWindowEntry::LoadWindow(CFile& file)
{
    std::array<std::uint8_t, tympan::kEntryWindow.width> bytes{};
    const ULONGLONG start = file.GetPosition();
    const UINT read = file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    const auto window = tympan::WindowFieldsIn(std::span(bytes).first(read));
    const auto kept = window.KeptColours();
    containerEntry_ = window.container.value_or(containerEntry_);
    numberOfColors_ = static_cast<unsigned short>(kept.size());
    colors_.fill(0);
    std::copy(kept.begin(), kept.end(), colors_.begin());
    if (!window.isWhole)
        throw new EntryErrorException(kEndInEntry);
    file.Seek(static_cast<LONGLONG>(start + window.length), CFile::begin);
}

bool PageCTWindowEntry::ValidateContainer(BasePictureIF* picture)
{
    if (dynamic_cast<LWFileInterface*>(picture) == nullptr)
        return true;
    auto* const record = dynamic_cast<LwPictureParameters*>(picture->PictureParams());
    if (record == nullptr || record->TransparentColorTableSize() != 0)
        return true;
    std::array<unsigned char, kColors> inTable{};
    const auto* const end =
        std::copy_if(colors_.begin(), colors_.begin() + numberOfColors_, inTable.begin(),
                     [&](unsigned char colour) { return colour < record->FileColorsNumber(); });
    return record->ForceTransparentColorTable(inTable.data(),
                                              static_cast<unsigned short>(end - inTable.begin()));
}

bool PageCTWindowEntry::isTypeOf(CFile& file)
{
    return Is(getEntryType(file), PlacementType::ctWindow);
}

// ---- making entries

BasePageEntry* create_page_entry_object(const unsigned char& type)
{
    std::unique_ptr<BasePageEntry> entry;
    tympan::Guarded(tympan::NoTrace(), tympan::kNotCreated, [&] { entry = MakeEntry(type); });
    return entry.release();
}

BasePageEntry* create_page_entry_object(CFile& file)
{
    unsigned char type = 0;
    tympan::Guarded(tympan::NoTrace(), tympan::kNotCreated, [&] { file.Read(&type, sizeof type); });
    return create_page_entry_object(type);
}
