// The colour records of a line-work file, its greys, and the transparent values that are worked out
// of the records.
#include "lw/lw_parameters.h"

#include "core/failure_codes.h"
#include "core/failures.h"
#include "core/whole_numbers.h"
#include "lw/lw_layout.h"
#include "platform/file.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <span>

namespace {

using tympan::kLwColourBytes;
using tympan::kLwColourFlags;
using tympan::kLwColourInks;
using tympan::kLwMostColours;

constexpr std::size_t kColumns = PictureParameters::kSlots;
// One more than the name keeps: the type's first letter takes its place.
constexpr std::size_t kNameBytes = tympan::kLwName.width + 1;
constexpr unsigned char kNoInk = 255;
constexpr unsigned int kBitsPerValue = 8;

static_assert(kLwColourInks.size() == kColumns);

/// The flag of a record by which its colour is transparent in a separation.
constexpr unsigned int TransparentFlag(std::size_t separation)
{
    return 0x80U >> separation;
}

/// The bytes of a file's colour records.
using Records = std::array<unsigned char, kLwColourBytes * kLwMostColours>;

/// The column of a separation, or `kColumns`.
std::size_t ColumnOf(ColorSeparationType separation)
{
    return std::min<std::size_t>(static_cast<std::uint32_t>(separation), kColumns);
}

template <typename Value>
void SetAll(std::span<Value[kColumns]> table, Value value)
{
    for (auto& row : table)
        std::fill(std::begin(row), std::end(row), value);
}

/// Puts a new table of `rows` rows in place of what there is, none for 0; `count` is never above
/// what the table has.
template <typename Value>
void Replace(std::unique_ptr<Value[][kColumns]>& table, std::size_t& count, std::size_t rows)
{
    count = 0;
    table.reset();
    if (rows == 0)
        return;
    table.reset(new (std::nothrow) Value[rows][kColumns]);
    if (!table)
        throw new MemoryAllocException;
    count = rows;
}

/// Takes over an array without freeing the one before.
template <typename Value>
void TakeOver(std::unique_ptr<Value[][kColumns]>& table, Value (*array)[kColumns])
{
    static_cast<void>(table.release());
    table.reset(array);
}

/// Reads colour records and fills up what the file doesn't hold: as if a reader of single bytes had
/// kept the last byte that came (before the first record: the number of colours), but for flags. A
/// colour that isn't there is transparent nowhere.
void ReadRecords(CFile& file, std::span<unsigned char> records, unsigned char lastByte)
{
    const std::size_t held = file.Read(records.data(), static_cast<UINT>(records.size()));
    if (held != 0)
        lastByte = records[held - 1];
    for (std::size_t at = held; at < records.size(); ++at)
        records[at] = at % kLwColourBytes == kLwColourFlags.offset ? 0 : lastByte;
}

/// Notes a colour in the columns that its flags name; false when they name none.
bool NoteTransparent(unsigned char flags, unsigned short colour,
                     unsigned short (&columns)[kColumns])
{
    bool isAny = false;
    for (std::size_t s = 0; s < kColumns; ++s)
        if ((flags & TransparentFlag(s)) != 0) {
            columns[s] = colour;
            isAny = true;
        }
    return isAny;
}

/// The smallest value that isn't used.
std::optional<unsigned short> FreeValue(const std::array<bool, 255>& used)
{
    const auto free = std::find(used.begin(), used.end(), false);
    if (free == used.end())
        return std::nullopt;
    return static_cast<unsigned short>(free - used.begin());
}

} // namespace

LwPictureParameters::LwPictureParameters() = default;

LwPictureParameters::LwPictureParameters(const LwPictureParameters& other) : LwPictureParameters()
{
    CopyParameters(other);
    if (other.ColorsTableExists())
        CreateColorsTable(other.tableColorsNumber_);
}

LwPictureParameters& LwPictureParameters::operator=(const LwPictureParameters& other)
{
    if (this == &other)
        return *this;
    CopyParameters(other);
    if (other.ColorsTableExists())
        CreateColorsTable(other.tableColorsNumber_);
    else
        DestroyColorsTable();
    PictureParameters::operator=(other);
    return *this;
}

LwPictureParameters::~LwPictureParameters() = default;

void LwPictureParameters::CopyParameters(const LwPictureParameters& other)
{
    transparentColor_ = other.transparentColor_;
    fileColorsNumber_ = other.fileColorsNumber_;
}

LwPictureParameters* LwPictureParameters::operator()(PictureParameters* record)
{
    return dynamic_cast<LwPictureParameters*>(record);
}

// ---- reading

bool LwPictureParameters::Load(CFile& file)
{
    if (!PictureParameters::Load(file))
        return false;
    ReadColorsNumber(file);
    file.Seek(tympan::kLwColours, CFile::begin);
    ReadColorsTable(file);
    RowSize(tympan::CutToWhole<unsigned int>(WidthInPixels()));
    BitsPerSample(kBitsPerValue * NumberOfSeparations());
    return true;
}

void LwPictureParameters::ReadColorsNumber(CFile& file)
{
    fileColorsNumber_ = 0;
    file.Read(&fileColorsNumber_, 1);
}

void LwPictureParameters::ReadColorsTable(CFile& file)
{
    CreateColorsTable(fileColorsNumber_);
    CreateTransparentColorTable(fileColorsNumber_);
    Records bytes;
    ReadRecords(file, std::span(bytes).first(kLwColourBytes * fileColorsNumber_),
                fileColorsNumber_);

    unsigned short transparentRows = 0;
    for (unsigned short i = 0; i < fileColorsNumber_; ++i) {
        const unsigned char* const record = bytes.data() + kLwColourBytes * i;
        if (NoteTransparent(record[kLwColourFlags.offset], i, transparentTable_[transparentRows]))
            ++transparentRows;
        for (std::size_t s = 0; s < kColumns; ++s)
            colorsTable_[i][s] = record[kLwColourInks[s].offset];
    }
    transparentTableSize_ = transparentRows;
    if (transparentRows != 0)
        CalcTableTransparentColor();
}

// ---- writing

bool LwPictureParameters::Save(CFile& file) const
{
    return PictureParameters::Save(file);
}

void LwPictureParameters::SaveHader(CFile& file)
{
    Separation(kSlots - 1, Black); // by its slot the mask says Black to a reader
    fileColorsNumber_ = kLwMostColours;
    file.Seek(tympan::kLwName.offset, CFile::begin);
    SaveFileName(file);
    file.Seek(tympan::kHeaderFileType.offset, CFile::begin); // the name's last byte gives way
    SaveFileType(file);
    if (!Save(file)) {
        TraceStatus(tympan::code::kHeaderRefused);
        return;
    }
    SaveLWNumberOfColors(file);
    file.Seek(tympan::kLwColours, CFile::begin);
    SaveFullGrayScaleColorsTable(file);
}

void LwPictureParameters::SaveFileName(CFile& file) const
{
    std::array<char, kNameBytes> field{};
    const std::string_view name = lwFileName_.View().substr(0, field.size());
    std::copy(name.begin(), name.end(), field.begin());
    file.Write(field.data(), static_cast<UINT>(field.size()));
}

void LwPictureParameters::SaveFileType(CFile& file) const
{
    file.Write("LW", 2);
}

void LwPictureParameters::SaveLWNumberOfColors(CFile& file) const
{
    file.Write(&fileColorsNumber_, 1);
}

void LwPictureParameters::SaveFullGrayScaleColorsTable(CFile& file) const
{
    Records bytes{};
    for (std::size_t index = 1; index <= fileColorsNumber_; ++index) {
        unsigned char* const record = bytes.data() + kLwColourBytes * (index - 1);
        const auto number = static_cast<unsigned char>(index);
        record[tympan::kLwColourNumber.offset] = number;
        for (const tympan::HeaderPlace& ink : kLwColourInks)
            record[ink.offset] = kNoInk;
        record[kLwColourInks[Black].offset] = tympan::LwGreyOfIndex(number);
    }
    file.Write(bytes.data(), static_cast<UINT>(kLwColourBytes * fileColorsNumber_));
}

// ---- the tables

void LwPictureParameters::CreateColorsTable(unsigned char rows)
{
    if (rows != tableColorsNumber_ || !colorsTable_) {
        DestroyColorsTable();
        // With room for the most colours, since a derived record sets the number by itself.
        std::size_t room = 0;
        Replace(colorsTable_, room, rows != 0 ? kLwMostColours : 0);
        tableColorsNumber_ = rows;
    }
    SetAll<unsigned char>({ colorsTable_.get(), tableColorsNumber_ }, 0);
}

// The size has two meanings in turn: rows that are there, and after reading rows that count. So a
// table may have more rows than it says, and is kept then.
void LwPictureParameters::CreateTransparentColorTable(unsigned char rows)
{
    if (rows != transparentTableSize_ || rows > transparentTableRows_) {
        transparentTableSize_ = 0;
        Replace(transparentTable_, transparentTableRows_, rows);
        transparentTableSize_ = rows;
    }
    SetAll<unsigned short>({ transparentTable_.get(), transparentTableRows_ }, kNoColour);
    transparentColor_.fill(kNoColour);
}

void LwPictureParameters::DestroyColorsTable()
{
    colorsTable_.reset();
    tableColorsNumber_ = 0;
}

void LwPictureParameters::DestroyTransparentColorTable()
{
    if (!transparentTable_)
        return;
    Replace(transparentTable_, transparentTableRows_, 0);
    transparentTableSize_ = 0;
}

void LwPictureParameters::ColorsTable(unsigned char (*const table)[4])
{
    TakeOver(colorsTable_, table);
}

void LwPictureParameters::TransparentColorTable(unsigned short (*const table)[4])
{
    TakeOver(transparentTable_, table);
    transparentTableRows_ = table != nullptr ? fileColorsNumber_ : 0;
}

unsigned char LwPictureParameters::GetColor(unsigned char row,
                                            const ColorSeparationType& separation) const
{
    const std::size_t column = ColumnOf(separation);
    const bool isThere = colorsTable_ && row < tableColorsNumber_ && column < kColumns;
    return isThere ? colorsTable_[row][column] : kNoInk;
}

void LwPictureParameters::SetColor(const ColorSeparationType& separation, unsigned char row,
                                   unsigned char value)
{
    const std::size_t column = ColumnOf(separation);
    if (colorsTable_ && row < tableColorsNumber_ && column < kColumns)
        colorsTable_[row][column] = value;
}

// ---- transparent colours

unsigned short LwPictureParameters::GetTransparentColor(const ColorSeparationType& separation) const
{
    const std::size_t column = ColumnOf(separation);
    return column < kColumns ? transparentColor_[column] : kNoColour;
}

void LwPictureParameters::SetTransparentColor(const ColorSeparationType& separation,
                                              unsigned char value)
{
    const std::size_t column = ColumnOf(separation);
    if (column < kColumns)
        transparentColor_[column] = value;
}

void LwPictureParameters::TransparentColor(const unsigned short* const values)
{
    std::copy_n(values, kColumns, transparentColor_.begin());
}

bool LwPictureParameters::IsColorTransparent(unsigned char row,
                                             ColorSeparationType separation) const
{
    const std::size_t column = ColumnOf(separation);
    if (column == kColumns)
        return false;
    const std::size_t rows = std::min<std::size_t>(transparentTableSize_, transparentTableRows_);
    return std::any_of(transparentTable_.get(), transparentTable_.get() + rows,
                       [&](const auto& colours) { return colours[column] == row; });
}

std::array<bool, 255> LwPictureParameters::UsedValues(std::size_t column) const
{
    std::array<bool, 255> used{};
    for (std::size_t row = 0; colorsTable_ && row < tableColorsNumber_; ++row)
        if (const unsigned char value = colorsTable_[row][column]; value < used.size())
            used[value] = true;
    return used;
}

void LwPictureParameters::CalcTableTransparentColor()
{
    for (std::size_t s = 0; s < kColumns; ++s) {
        const auto separation = static_cast<ColorSeparationType>(s);
        const auto value = SeparationExists(separation) ? FreeValue(UsedValues(s)) : std::nullopt;
        transparentColor_[s] = value.value_or(kNoColour);
        if (!value)
            continue;
        for (unsigned int row = 0; row < tableColorsNumber_; ++row)
            if (const auto colour = static_cast<unsigned char>(row);
                IsColorTransparent(colour, separation))
                SetColor(separation, colour, static_cast<unsigned char>(*value));
    }
}

bool LwPictureParameters::ForceTransparentColorTable(const unsigned char* const colors,
                                                     unsigned short count)
{
    if (colors == nullptr)
        return false;
    const std::span<const unsigned char> transparent(colors, count);
    for (std::size_t s = 0; s < std::min(NumberOfSeparations(), kSlots); ++s) {
        transparentColor_[s] = FreeValue(UsedValues(s)).value_or(transparentColor_[s]);
        for (const unsigned char colour : transparent) {
            if (transparentColor_[s] == kNoColour || colour >= transparentTableRows_)
                return false;
            transparentTable_[colour][s] = transparentColor_[s];
        }
    }
    return true;
}
