// Header, directories and values of a TIFF/IT file.
#include "core/whole_numbers.h"
#include "tiff/tiff_it_failures.h"
#include "tiff/tiff_it_layout.h"
#include "tiff/tiff_it_parser.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

using tympan::TiffNumbers;

// Values that a number can be taken from; `use(values)` is given those.
template <typename Use>
void WithNumbers(const IfdEntry& entry, Use&& use)
{
    if (const auto* const shorts = std::get_if<std::vector<std::uint16_t>>(&entry.Data))
        use(*shorts);
    else if (const auto* const longs = std::get_if<std::vector<std::uint32_t>>(&entry.Data))
        use(*longs);
}

void TakeFirst(const IfdEntry& entry, std::uint32_t& number)
{
    WithNumbers(entry, [&](const auto& values) {
        if (!values.empty())
            number = values.front();
    });
}

// The table has the length of the strip field that made it; what a longer one brings is dropped.
void TakeStrips(const IfdEntry& entry, std::optional<std::vector<StripInfo>>& strips,
                std::uint32_t StripInfo::*member)
{
    WithNumbers(entry, [&](const auto& values) {
        if (!strips)
            strips.emplace(values.size());
        const std::size_t count = std::min(values.size(), strips->size());
        for (std::size_t i = 0; i < count; ++i)
            (*strips)[i].*member = values[i];
    });
}

template <typename Value, typename Decode>
void DecodeEach(IfdEntry& entry, Decode&& decode)
{
    std::vector<Value> values(entry.Count);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = decode(i);
    entry.Data = std::move(values);
}

} // namespace

IfdEntry::~IfdEntry() = default;

IfdEntries::IfdEntries(std::uint16_t numberOfEntries,
                       std::shared_ptr<const std::vector<IfdEntry>> list,
                       std::uint32_t nextIfdOffset)
    : NumberOfEntries(numberOfEntries), NextIfdOffset(nextIfdOffset), list_(std::move(list)),
      shown_(list_->size())
{}

IfdEntries::~IfdEntries() = default;

// A walk along the directories, and what it may still take.
struct TiffItP1Interface::Chain {
    static constexpr std::uint64_t kMostValueBytes = 8; // for each byte of the file
    static constexpr std::uint64_t kLeastIfdBytes = 6;

    explicit Chain(std::uint64_t fileLength)
        : ifdsLeft(fileLength / kLeastIfdBytes), entriesLeft(fileLength / tympan::kIfdEntryBytes),
          valueBytesLeft(tympan::Product(fileLength, kMostValueBytes).value_or(fileLength))
    {}

    static bool Take(std::uint64_t& left, std::uint64_t count)
    {
        if (count > left)
            return false;
        left -= count;
        return true;
    }

    // Whether the walk has come to a place twice, which a loop is found by before it was gone through
    // often: the place to meet again is set anew after 1, 2, 4, ... steps.
    bool ComesBack()
    {
        if (offset == met)
            return true;
        if (--stepsToMeet == 0) {
            met = offset;
            stepsToMeet = steps *= 2;
        }
        return false;
    }

    std::uint64_t ifdsLeft, entriesLeft, valueBytesLeft;
    std::uint32_t offset = 0;
    std::uint32_t met = 0;
    std::uint64_t steps = 1, stepsToMeet = 1;
    std::shared_ptr<std::vector<IfdEntry>> entries = std::make_shared<std::vector<IfdEntry>>();
};

bool TiffItP1Interface::Fail(unsigned long code)
{
    TraceStatus(code);
    return false;
}

bool TiffItP1Interface::ReadHeader(CFile& file)
{
    std::array<std::byte, tympan::kTiffHeaderBytes> bytes{};
    UINT count = 0;
    const bool isRead = tympan::Guarded(Failures(), tympan::kTiffItFailures, [&] {
        tympan::KeepingMessage([&] { count = file.Read(bytes.data(), bytes.size()); },
                               [&](const CString& message) { TraceStatusString(message); });
    });
    if (!isRead)
        return false;
    if (count < bytes.size())
        return Fail(tympan::code::kTiffItShortRead);
    m_ByteOrder = TiffNumbers(bytes, false).Short(tympan::kTiffByteOrder.offset);
    const TiffNumbers numbers(bytes, m_ByteOrder == tympan::kHighByteFirst);
    m_FirstIfdOffset = numbers.Long(tympan::kTiffFirstIfd.offset);
    if (numbers.Short(tympan::kTiffVersionPlace.offset) != tympan::kTiffVersion)
        return Fail(tympan::code::kTiffItVersion);
    if (m_FirstIfdOffset % 2 != 0)
        return Fail(tympan::code::kTiffItOddOffset);
    return true;
}

bool TiffItP1Interface::ReadIfds(CFile& file)
{
    m_PreviousIfdCount = static_cast<std::uint32_t>(m_Ifds.size());
    m_Ifds.clear();
    Chain chain(file.GetLength());
    chain.offset = m_FirstIfdOffset;
    while (chain.offset != 0) {
        if (chain.ComesBack() || !Chain::Take(chain.ifdsLeft, 1))
            return Fail(tympan::code::kTiffFailed);
        if (!ReadIfd(file, chain))
            return false;
    }
    return true;
}

bool TiffItP1Interface::ReadIfd(CFile& file, Chain& chain)
{
    const bool highByteFirst = m_ByteOrder == tympan::kHighByteFirst;
    std::array<std::byte, 4> number{};
    file.Seek(chain.offset, CFile::begin);
    if (file.Read(number.data(), 2) < 2)
        return Fail(tympan::code::kTiffItShortRead);
    const std::uint16_t count = TiffNumbers(number, highByteFirst).Short(0);
    std::vector<std::byte> bytes(count * tympan::kIfdEntryBytes);
    if (file.Read(bytes.data(), static_cast<UINT>(bytes.size())) < bytes.size())
        return Fail(tympan::code::kTiffItShortRead);
    if (!Chain::Take(chain.entriesLeft, count))
        return Fail(tympan::code::kTiffFailed);
    for (std::span<const std::byte> left = bytes; !left.empty();
         left = left.subspan(tympan::kIfdEntryBytes))
        if (!ReadEntry(file, left.first(tympan::kIfdEntryBytes), chain))
            return false;
    if (file.Read(number.data(), 4) < 4)
        return Fail(tympan::code::kTiffItShortRead);
    chain.offset = TiffNumbers(number, highByteFirst).Long(0);
    m_Ifds.emplace_back(count, chain.entries, chain.offset);
    return true;
}

bool TiffItP1Interface::ReadEntry(CFile& file, std::span<const std::byte> bytes, Chain& chain)
{
    const TiffNumbers numbers(bytes, m_ByteOrder == tympan::kHighByteFirst);
    IfdEntry entry;
    entry.Tag = numbers.Short(0);
    entry.Type = numbers.Short(2);
    entry.Count = numbers.Long(tympan::kTiffFirstIfd.offset);
    if (!ReadValues(file, bytes.last(tympan::kInlineBytes), entry, chain))
        return false;
    StoreField(entry);
    chain.entries->push_back(std::move(entry));
    return true;
}

bool TiffItP1Interface::ReadValues(CFile& file, std::span<const std::byte> bytes, IfdEntry& entry,
                                   Chain& chain)
{
    const std::uint64_t size = entry.Count * tympan::BytesOfValue(entry.Type);
    if (size <= bytes.size())
        return DecodeValues(bytes, entry);
    if (!Chain::Take(chain.valueBytesLeft, size))
        return Fail(size > file.GetLength() ? tympan::code::kTiffItShortRead
                                            : tympan::code::kTiffFailed);
    entry.ValueOffset = TiffNumbers(bytes, m_ByteOrder == tympan::kHighByteFirst).Long(0);
    return ReadOffsetValues(file, entry, size);
}

// What the file can't hold is not tried, so that no memory is taken for it.
bool TiffItP1Interface::ReadOffsetValues(CFile& file, IfdEntry& entry, std::uint64_t size)
{
    bool isDecoded = false;
    const bool isRead = tympan::Guarded(Failures(), tympan::kTiffItFailures, [&] {
        tympan::KeepingMessage(
            [&] {
                const ULONGLONG length = file.GetLength();
                const ULONGLONG behind =
                    std::min<ULONGLONG>(length - std::min<ULONGLONG>(length, entry.ValueOffset),
                                        std::numeric_limits<UINT>::max());
                const ULONGLONG position = file.GetPosition();
                std::vector<std::byte> bytes(static_cast<std::size_t>(size <= behind ? size : 0));
                file.Seek(entry.ValueOffset, CFile::begin);
                if (file.Read(bytes.data(), static_cast<UINT>(bytes.size())) < size) {
                    Fail(tympan::code::kTiffItShortRead);
                    return;
                }
                isDecoded = DecodeValues(bytes, entry);
                file.Seek(static_cast<LONGLONG>(position), CFile::begin);
            },
            [&](const CString& message) { TraceStatusString(message); });
    });
    return isRead && isDecoded;
}

bool TiffItP1Interface::DecodeValues(std::span<const std::byte> bytes, IfdEntry& entry)
{
    const TiffNumbers numbers(bytes, m_ByteOrder == tympan::kHighByteFirst);
    switch (entry.Type) {
    case tympan::field::kByte:
    case tympan::field::kAscii:
        DecodeEach<std::uint8_t>(
            entry, [&](std::size_t i) { return std::to_integer<std::uint8_t>(bytes[i]); });
        return true;
    case tympan::field::kShort:
        DecodeEach<std::uint16_t>(entry, [&](std::size_t i) { return numbers.Short(i * 2); });
        return true;
    case tympan::field::kLong:
        DecodeEach<std::uint32_t>(entry, [&](std::size_t i) { return numbers.Long(i * 4); });
        return true;
    case tympan::field::kRational:
        DecodeEach<double>(entry, [&](std::size_t i) {
            return static_cast<double>(numbers.Long(i * 8)) / numbers.Long(i * 8 + 4);
        });
        return true;
    default: return Fail(tympan::code::kTiffItFieldType);
    }
}

// Values of a type that holds no whole numbers above a byte count as missing.
void TiffItP1Interface::StoreField(const IfdEntry& entry)
{
    switch (entry.Tag) {
    case tympan::tag::kImageWidth: return TakeFirst(entry, m_ImageWidth);
    case tympan::tag::kImageLength: return TakeFirst(entry, m_ImageLength);
    case tympan::tag::kStripOffsets:
        WithNumbers(entry, [&](const auto&) { m_StripCount = entry.Count; });
        return TakeStrips(entry, m_Strips, &StripInfo::Offset);
    case tympan::tag::kRowsPerStrip: return TakeStrips(entry, m_Strips, &StripInfo::RowsPerStrip);
    case tympan::tag::kStripByteCounts: return TakeStrips(entry, m_Strips, &StripInfo::ByteCount);
    default: return;
    }
}
