// The common header. What stands where is told by core/header_layout.h; here, in one table, what each
// field is to the record. All but the first two are what `Save` writes.
#include "core/picture_parameters.h"

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/header_layout.h"
#include "core/header_text.h"
#include "core/whole_numbers.h"
#include "platform/file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

constexpr char kNlwMark = 2;
constexpr ColorSeparationType kNone = NoSeparation;

constexpr std::size_t kSavedFrom = tympan::kHeaderUnitsCode.offset;
constexpr std::size_t kSizesFrom = tympan::kHeaderHeight.offset;
constexpr std::size_t kHeaderEnd = tympan::kHeaderEnd;
constexpr std::size_t kMaskBehindCount = tympan::kHeaderMask.offset - tympan::kHeaderCount.offset;
constexpr double kUnitsEnd = 100000000.0;
constexpr double kLargestPixels = std::numeric_limits<std::int32_t>::max();

constexpr tympan::FailureRow kLoadFailures[] = {
    { tympan::Caught::LoadFailed, tympan::code::kHeaderRefused, nullptr },
};

// The order of a value of 1 or more, and 0 below. `GetNumberOrder` rounds at each of its steps and
// takes some values just below a power of ten for it; powers of ten are exact.
int DigitsBeforePoint(double value)
{
    int digits = 0;
    double power = 1.0;
    while (power <= value) {
        power *= 10.0;
        ++digits;
    }
    return digits;
}

template <std::size_t size>
void Put(unsigned char* target, const std::array<char, size>& text)
{
    std::memcpy(target, text.data(), size);
}

} // namespace

struct PictureParameters::HeaderField : tympan::HeaderPlace {
    enum class Role { NlwMark, FileType, UnitsCode, Separations, Units, Pixels };

    Role role = Role::NlwMark;
    Size PictureParameters::*size = nullptr; // of a size: which
    double Size::*side = nullptr;            // and which side of it

    bool IsSaved() const { return offset >= kSavedFrom; }
};

struct PictureParameters::HeaderTable {
    using Role = HeaderField::Role;
    using P = PictureParameters;

    static constexpr HeaderField kNlw{ tympan::kHeaderNlwMark, Role::NlwMark };
    static constexpr HeaderField kFileType{ tympan::kHeaderFileType, Role::FileType };
    static constexpr HeaderField kUnits{ tympan::kHeaderUnitsCode, Role::UnitsCode };
    static constexpr HeaderField kSeparations{ tympan::kHeaderSeparations, Role::Separations };
    static constexpr HeaderField kHeight{ tympan::kHeaderHeight, Role::Units, &P::sizeInUnits_,
                                          &Size::first };
    static constexpr HeaderField kWidth{ tympan::kHeaderWidth, Role::Units, &P::sizeInUnits_,
                                         &Size::second };
    static constexpr HeaderField kHeightInPixels{ tympan::kHeaderHeightInPixels, Role::Pixels,
                                                  &P::sizeInPixels_, &Size::first };
    static constexpr HeaderField kWidthInPixels{ tympan::kHeaderWidthInPixels, Role::Pixels,
                                                 &P::sizeInPixels_, &Size::second };

    // In the order in which they are read: the separations are refused before a size is taken.
    static constexpr std::array<const HeaderField*, 8> kAll{
        &kNlw,    &kFileType, &kUnits,          &kSeparations,
        &kHeight, &kWidth,    &kHeightInPixels, &kWidthInPixels,
    };

    static constexpr bool TakesAllThatIsTold()
    {
        std::size_t width = 0;
        for (const HeaderField* const field : kAll)
            width += field->width;
        for (const tympan::HeaderPlace& told : tympan::kHeaderFields)
            width -= told.width;
        return width == 0;
    }
};

PictureParameters::PictureParameters(const PictureParameters& other)
{
    Copy(other);
}

PictureParameters& PictureParameters::operator=(const PictureParameters& other)
{
    if (this != &other)
        Copy(other);
    return *this;
}

PictureParameters::~PictureParameters() = default;

void PictureParameters::Copy(const PictureParameters& other)
{
    resolution_ = { other.resolution_.second, other.resolution_.first };
    fileSizeUnitsFactor_ = other.fileSizeUnitsFactor_;
    sizeInPixels_ = other.sizeInPixels_;
    numberOfSeparations_ = other.numberOfSeparations_;
    slots_ = other.slots_;
}

void PictureParameters::Clear()
{
    bitsPerSample_ = 0;
    rowSize_ = 0;
    resolution_ = { 0.0, 0.0 };
    sizeInPixels_ = { 0.0, 0.0 };
    numberOfSeparations_ = 0;
    slots_.fill(NoSeparation);
}

// ---- reading and writing the header

bool PictureParameters::Load(CFile& file)
{
    const bool loaded = tympan::Guarded(trace_, kLoadFailures, [&] { LoadCommonHeader(file); });
    if (!loaded)
        Clear();
    return loaded;
}

void PictureParameters::LoadCommonHeader(CFile& file)
{
    static_assert(HeaderTable::TakesAllThatIsTold());
    std::array<char, kHeaderEnd> header{}; // what a short file doesn't hold reads as 0
    file.Seek(0, CFile::begin);
    file.Read(header.data(), static_cast<UINT>(header.size()));
    file.Seek(kSizesFrom, CFile::begin); // where refused separations leave it
    for (const HeaderField* field : HeaderTable::kAll)
        Decode(*field, std::string_view(header.data() + field->offset, field->width));
    file.Seek(kHeaderEnd, CFile::begin);
    fileSizeUnitsFactor_ = 1.0;
    resolution_ = { CalculateResolution(WidthInPixels(), WidthInUnits()),
                    CalculateResolution(HeightInPixels(), HeightInUnits()) };
}

bool PictureParameters::Save(CFile& file) const
{
    if (!SizesFitText())
        return false;
    std::array<unsigned char, kHeaderEnd> header{};
    for (const HeaderField* field : HeaderTable::kAll)
        if (field->IsSaved())
            Encode(*field, header.data() + field->offset);
    file.Seek(kSavedFrom, CFile::begin);
    file.Write(header.data() + kSavedFrom, static_cast<UINT>(kHeaderEnd - kSavedFrom));
    return true;
}

bool PictureParameters::SizesFitText() const
{
    const auto inUnits = [](double size) { return size >= 0.0 && size < kUnitsEnd; };
    const auto inPixels = [](double size) { return size >= 0.0 && size < kLargestPixels + 1.0; };
    return inUnits(HeightInUnits()) && inUnits(WidthInUnits()) && inPixels(HeightInPixels()) &&
           inPixels(WidthInPixels());
}

void PictureParameters::Decode(const HeaderField& field, std::string_view bytes)
{
    using Role = HeaderField::Role;
    switch (field.role) {
    case Role::NlwMark: nlw_ = bytes[0] == kNlwMark; break;
    case Role::FileType: fileType_ = std::string(bytes).c_str(); break; // ends at a zero byte
    case Role::UnitsCode:
        fileSizeUnitsFactor_ = bytes[0] == tympan::kInchesCode ? 1.0 : tympan::kInchesPerMillimetre;
        break;
    case Role::Separations: TakeSeparations(bytes); break;
    case Role::Units:
        this->*field.size.*field.side = tympan::FloatFromText(bytes) * fileSizeUnitsFactor_;
        break;
    case Role::Pixels: this->*field.size.*field.side = tympan::WholeFromText(bytes); break;
    }
}

void PictureParameters::Encode(const HeaderField& field, unsigned char* bytes) const
{
    using Role = HeaderField::Role;
    std::array<unsigned char, tympan::kFloatTextBytes + 1> text{};
    switch (field.role) {
    case Role::NlwMark:
    case Role::FileType: break; // stand in front of what is written
    case Role::UnitsCode:
        text[0] = fileSizeUnitsFactor_ != 0.0 ? tympan::kInchesCode : tympan::kMillimetresCode;
        break;
    case Role::Separations:
        text[0] = static_cast<unsigned char>(numberOfSeparations_);
        text[kMaskBehindCount] = DefineAvailableSeparations();
        break;
    case Role::Units: SizeToBuffer(this->*field.size.*field.side, text.data()); break;
    case Role::Pixels: SizeInPixelsToBuffer(this->*field.size.*field.side, text.data()); break;
    }
    std::memcpy(bytes, text.data(), field.width);
}

// Count, a reserved byte, mask. The two aren't compared: the record's count comes from the mask.
void PictureParameters::TakeSeparations(std::string_view bytes)
{
    if (!IsNumberOfSeparationsLegal(static_cast<unsigned char>(bytes[0])))
        throw LoadFailedException("Illegal separations number!");
    if (!DefineAvailableSeparations(static_cast<unsigned char>(bytes[kMaskBehindCount])))
        throw LoadFailedException("Illegal separations mask!");
}

// ---- single fields

void PictureParameters::LoadField(const HeaderField& field, CFile& file, unsigned char* buffer)
{
    std::memset(buffer, 0, field.width + 1);
    file.Read(buffer, static_cast<UINT>(field.width));
    Decode(field, std::string_view(reinterpret_cast<const char*>(buffer), field.width));
}

void PictureParameters::SaveField(const HeaderField& field, CFile& file,
                                  unsigned char* buffer) const
{
    Encode(field, buffer);
    buffer[field.width] = 0;
    file.Write(buffer, static_cast<UINT>(field.width));
}

void PictureParameters::LoadFileSizeUnits(CFile& file)
{
    unsigned char buffer[2];
    LoadField(HeaderTable::kUnits, file, buffer);
}

void PictureParameters::SaveFileSizeUnits(CFile& file) const
{
    unsigned char buffer[2];
    SaveField(HeaderTable::kUnits, file, buffer);
}

void PictureParameters::LoadSeparationsInfo(CFile& file)
{
    unsigned char buffer[4];
    LoadField(HeaderTable::kSeparations, file, buffer);
}

void PictureParameters::SaveSeparationsInfo(CFile& file) const
{
    unsigned char buffer[4];
    SaveField(HeaderTable::kSeparations, file, buffer);
}

void PictureParameters::LoadFileHeight(CFile& file, unsigned char* buffer)
{
    LoadField(HeaderTable::kHeight, file, buffer);
}

void PictureParameters::LoadFileWidth(CFile& file, unsigned char* buffer)
{
    LoadField(HeaderTable::kWidth, file, buffer);
}

void PictureParameters::SaveFileHeight(CFile& file, unsigned char* buffer) const
{
    SaveField(HeaderTable::kHeight, file, buffer);
}

void PictureParameters::SaveFileWidth(CFile& file, unsigned char* buffer) const
{
    SaveField(HeaderTable::kWidth, file, buffer);
}

void PictureParameters::LoadFileHeightInPixels(CFile& file, unsigned char* buffer)
{
    LoadField(HeaderTable::kHeightInPixels, file, buffer);
}

void PictureParameters::LoadFileWidthInPixels(CFile& file, unsigned char* buffer)
{
    LoadField(HeaderTable::kWidthInPixels, file, buffer);
}

void PictureParameters::SaveFileHeightInPixels(CFile& file, unsigned char* buffer) const
{
    SaveField(HeaderTable::kHeightInPixels, file, buffer);
}

void PictureParameters::SaveFileWidthInPixels(CFile& file, unsigned char* buffer) const
{
    SaveField(HeaderTable::kWidthInPixels, file, buffer);
}

void PictureParameters::LoadFileNlwBit(CFile& file)
{
    unsigned char buffer[2];
    LoadField(HeaderTable::kNlw, file, buffer);
}

void PictureParameters::LoadFileType(CFile& file, unsigned char* buffer)
{
    LoadField(HeaderTable::kFileType, file, buffer);
}

// ---- numbers and their text

double PictureParameters::Resolution() const
{
    const auto [x, y] = resolution_;
    return std::abs(x - y) <= 0.1 || x == y ? std::max(x, y) : -1.0;
}

double PictureParameters::CalculateResolution(double pixels, double units)
{
    return std::trunc(pixels / units * 10000.0) * 0.0001;
}

int PictureParameters::GetNumberOrder(double value)
{
    if (value == 0.0 || !std::isfinite(value))
        return 0;
    value = std::abs(value);
    int order = 0;
    const bool isSmall = value < 1.0;
    while ((value < 1.0) == isSmall) {
        value *= isSmall ? 10.0 : 0.1;
        order += isSmall ? -1 : 1;
    }
    return order;
}

void PictureParameters::SizeToBuffer(double value, unsigned char* buffer)
{
    constexpr int kDigits = 8;
    value = value > 0.0 ? std::min(value, std::nextafter(kUnitsEnd, 0.0)) : 0.0;
    const int order = DigitsBeforePoint(value);
    for (int i = order; i < kDigits; ++i)
        value *= 10.0;

    std::array<char, tympan::kFloatTextBytes + 1> text{ '+', '.' };
    std::snprintf(text.data() + 2, text.size() - 2, "%d", tympan::CutToWhole<std::int32_t>(value));
    text[10] = 'E';
    text[11] = '+';
    text[12] = '0';
    text[13] = static_cast<char>('0' + order);
    text[14] = '\0';
    Put(buffer, text);
}

void PictureParameters::SizeInPixelsToBuffer(double value, unsigned char* buffer)
{
    const auto whole = tympan::CutToWhole<std::int32_t>(std::max(value, 0.0));
    std::array<char, tympan::kWholeTextBytes + 1> text{};
    std::snprintf(text.data(), text.size(), "+%011d", whole);
    Put(buffer, text);
}

// ---- separations

const ColorSeparationType& PictureParameters::Separation(unsigned int slot) const
{
    return slot < kSlots ? slots_[slot] : kNone;
}

void PictureParameters::Separation(unsigned int slot, const ColorSeparationType& separation)
{
    if (slot < kSlots)
        slots_[slot] = separation;
}

unsigned int PictureParameters::SlotOf(ColorSeparationType separation) const
{
    const auto end = slots_.begin() + std::min(numberOfSeparations_, kSlots);
    const auto slot = std::find(slots_.begin(), end, separation);
    return slot == end ? kSlots : static_cast<unsigned int>(slot - slots_.begin());
}

bool PictureParameters::SeparationExists(const ColorSeparationType& separation) const
{
    return SlotOf(separation) != kSlots;
}

void PictureParameters::AddSeparation(const ColorSeparationType& separation)
{
    Separation(numberOfSeparations_, separation);
    IncreaseSeparationsNumber();
}

bool PictureParameters::DefineAvailableSeparations(unsigned char mask)
{
    for (unsigned int i = 0; i < kSlots; ++i)
        if ((static_cast<unsigned int>(mask) >> i & 1U) != 0)
            AddSeparation(static_cast<ColorSeparationType>(i));
    return IsNumberOfSeparationsLegal(numberOfSeparations_);
}

unsigned char PictureParameters::DefineAvailableSeparations() const
{
    unsigned int mask = 0;
    for (unsigned int i = 0; i < kSlots; ++i)
        mask |= (slots_[i] != NoSeparation ? 1U : 0U) << i;
    return static_cast<unsigned char>(mask);
}
