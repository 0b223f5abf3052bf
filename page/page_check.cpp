// Checks page files: the list of entries, and the pictures that they place, each of which is opened
// and proved by its own format.
#include "page/page_check.h"

#include "core/header_check.h"
#include "core/header_text.h"
#include "page/page_check_rules.h"
#include "page/page_file.h"
#include "page/page_layout.h"
#include "page/placed_file.h"
#include "platform/file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace tympan {

namespace {

using namespace page_rule;

constexpr double kEdgeTolerance = 0.01; // inches
constexpr double kSizeTolerance = 0.01; // of the size, and inches

std::string Inches(double value)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << std::setprecision(6) << value;
    return out.str();
}

std::string Quoted(const CString& path)
{
    return tympan::Quoted(path.View());
}

class PageCheck {
  public:
    PageCheck(CFile& page, Findings& findings)
        : page_(page), findings_(findings), length_(page.GetLength())
    {}

    void Check()
    {
        const std::string front = FrontOf(page_, kPageCount.offset + kPageCount.width);
        CheckHeader(front, findings_);
        TakePageSize();
        const std::size_t counted = Counted(front);
        const std::size_t entries = std::min(counted, RoomForPageEntries(page_));
        if (entries < counted)
            findings_.Tell(kEntriesMissing, { {}, length_ }, [&] {
                return "The page counts " + std::to_string(counted) +
                       " entries; the file has room for " + std::to_string(entries) + ".";
            });
        for (index_ = 0; index_ < entries; ++index_) {
            findings_.Reached(PlaceOfPageEntry(index_), length_);
            CheckEntry();
        }
    }

  private:
    void TakePageSize()
    {
        PictureParameters record;
        if (record.Load(page_))
            size_ = { record.HeightInUnits(), record.WidthInUnits() };
    }

    std::size_t Counted(std::string_view front)
    {
        if (front.size() < kPageCount.offset)
            return 0;
        const std::string_view text = front.substr(kPageCount.offset);
        const double value = WholeFromText(text);
        constexpr double kMost = kMostPageEntries;
        if (DecimalStart(text).empty() || value < 0.0 || value > kMost)
            findings_.Tell(kCount, { {}, kPageCount.offset }, [&] {
                return "The number of entries is " + tympan::Quoted(text) +
                       "; a whole number from 0 to 65535 was expected.";
            });
        return static_cast<std::uint16_t>(static_cast<std::int32_t>(value));
    }

    std::string Entry() const { return "Entry " + std::to_string(index_); }
    Place At(std::size_t offset) const { return { {}, PlaceOfPageEntry(index_) + offset }; }
    Place At(double Placement::*value, PlacementType type) const
    {
        const auto* const number =
            std::find_if(kEntryNumbers.begin(), kEntryNumbers.end(),
                         [&](const EntryNumber& one) { return one.value == value; });
        return At(number->offset + ShiftOf(type));
    }

    void CheckEntry()
    {
        const EntryRecord record = ReadEntryRecord(page_, index_);
        const auto type = PlacementTypeOf(record.TypeByte());
        if (!type)
            findings_.Tell(kUnknownType, At(0), [&] {
                return Entry() + " is of type " + std::to_string(record.TypeByte()) +
                       "; 1, 2 or 5 was expected.";
            });
        else if (!record.IsWhole(*type))
            findings_.Tell(kEntryCutShort, { {}, length_ }, [&] {
                return "The file ends with byte " + std::to_string(record.held) + " of entry " +
                       std::to_string(index_) + ".";
            });
        else
            CheckFields(record, record.Read(*type));
        if (!type || !record.IsWhole(*type))
            KeepForWindows(nullptr);
    }

    void CheckFields(const EntryRecord& record, const Placement& placement)
    {
        for (const EntryNumber& number : kEntryNumbers)
            CheckNumber(record, number, placement);
        CheckExpectedSize(placement);
        const PlacedFile* const placed = CheckPath(placement.path);
        if (placed != nullptr && placed->size)
            CompareSizes(placement, *placed->size);
        CheckEdges(placement);
        if (placement.type == PlacementType::ctWindow)
            CheckWindow(record, placement);
        KeepForWindows(placed);
    }

    void CheckNumber(const EntryRecord& record, const EntryNumber& number,
                     const Placement& placement)
    {
        const std::string_view text = record.NumberText(number, placement.type);
        const std::string_view decimal = DecimalStart(text);
        const bool isNumber = !decimal.empty() && std::isfinite(placement.*number.value);
        if (isNumber && !HasMoreThan(text, decimal))
            return;
        const CheckRule& rule = isNumber ? kNumberForm : kNumber;
        findings_.Tell(rule, At(number.value, placement.type), [&] {
            return "The " + std::string(number.name) + " of entry " + std::to_string(index_) +
                   " is " + tympan::Quoted(text) + "; a number" +
                   (isNumber ? " and nothing else" : " like +.12500000E+02") + " was expected.";
        });
    }

    // Whether anything but blanks and a terminator's rest stands behind the number.
    static bool HasMoreThan(std::string_view text, std::string_view decimal)
    {
        const auto end = static_cast<std::size_t>(decimal.data() - text.data()) + decimal.size();
        const std::string_view rest = text.substr(end, text.find('\0', end) - end);
        return rest.find_first_not_of(" \t\n\v\f\r") != std::string_view::npos;
    }

    void CheckExpectedSize(const Placement& placement)
    {
        if (placement.height > 0.0 && placement.width > 0.0)
            return;
        findings_.Tell(
            kNoSize,
            At(placement.height > 0.0 ? &Placement::width : &Placement::height, placement.type),
            [&] {
                return Entry() + " expects a picture " + Inches(placement.width) + " wide and " +
                       Inches(placement.height) + " high; sizes above 0 were expected.";
            });
    }

    // What stands at the path, when it is a picture.
    const PlacedFile* CheckPath(CString path)
    {
        path.TrimRight(' ');
        if (path.IsEmpty()) {
            findings_.Tell(kNoPath, At(kEntryPath.offset),
                           [&] { return Entry() + " names no file."; });
            return nullptr;
        }
        const PlacedFile& placed = FileAt(path);
        switch (placed.state) {
        case PlacedFile::State::missing: TellPath(kNotFound, path, "can't be opened"); break;
        case PlacedFile::State::unrecognised:
            TellPath(kNotRecognised, path, "is of no format that this library knows");
            break;
        case PlacedFile::State::page: TellPath(kPlacedPage, path, "is a page"); break;
        case PlacedFile::State::picture: TellUnsound(path, placed); return &placed;
        }
        return nullptr;
    }

    const PlacedFile& FileAt(const CString& path)
    {
        const auto known = files_.find(path);
        return known != files_.end() ? known->second
                                     : files_.emplace(path, LookAtPlaced(path)).first->second;
    }

    void TellPath(const CheckRule& rule, const CString& path, const char* what)
    {
        findings_.Tell(rule, At(kEntryPath.offset), [&] {
            return Entry() + " places " + Quoted(path) + ", which " + what + ".";
        });
    }

    void TellUnsound(const CString& path, const PlacedFile& placed)
    {
        if (placed.errors == 0 && placed.isOpen)
            return;
        findings_.Tell(kUnsound, At(kEntryPath.offset), [&] {
            const std::string taken = Entry() + " places " + Quoted(path) + ", which is taken as " +
                                      std::string(placed.format);
            return placed.errors == 0
                       ? taken + " and can't be opened."
                       : taken + " and has " + tympan::CountOf(placed.errors, "error") +
                             ", the first of them: " + placed.firstError;
        });
    }

    void CompareSizes(const Placement& placement, const SizeInInches& size)
    {
        if (!(placement.height > 0.0 && placement.width > 0.0) ||
            (IsNear(placement.height, size.height) && IsNear(placement.width, size.width)))
            return;
        findings_.Tell(kSizeDiffers, At(&Placement::height, placement.type), [&] {
            return "The picture of entry " + std::to_string(index_) + " is " + Inches(size.width) +
                   " by " + Inches(size.height) + " inches, and the page expects " +
                   Inches(placement.width) + " by " + Inches(placement.height) + ".";
        });
    }

    static bool IsNear(double expected, double real)
    {
        return std::abs(expected - real) <= std::max(kSizeTolerance * expected, kSizeTolerance);
    }

    void CheckEdges(const Placement& placement)
    {
        const PlacementBounds box = BoundsOf(placement);
        if (!(size_.height > 0.0 && size_.width > 0.0) || IsOnPage(box))
            return;
        findings_.Tell(kBeyondEdge, At(&Placement::yOffset, placement.type), [&] {
            return Entry() + " lies from " + Inches(box.left) + ", " + Inches(box.top) + " to " +
                   Inches(box.right) + ", " + Inches(box.bottom) + " inches, and the page has " +
                   Inches(size_.width) + " by " + Inches(size_.height) + ".";
        });
    }

    bool IsOnPage(const PlacementBounds& box) const
    {
        return std::min(box.left, box.right) >= -kEdgeTolerance &&
               std::min(box.top, box.bottom) >= -kEdgeTolerance &&
               std::max(box.left, box.right) <= size_.width + kEdgeTolerance &&
               std::max(box.top, box.bottom) <= size_.height + kEdgeTolerance;
    }

    // Windows can name no entry behind those that are kept.
    void KeepForWindows(const PlacedFile* placed)
    {
        if (index_ <= kHighestContainer)
            first_.push_back(placed);
    }

    void CheckWindow(const EntryRecord& record, const Placement& placement)
    {
        const std::size_t listed = record.Window().colours.size();
        if (listed > kMostWindowColours)
            findings_.Tell(kColours, At(kEntryColours.offset), [&] {
                return Entry() + " lists " + std::to_string(listed) + " colours.";
            });
        const unsigned int container = *placement.container;
        const PlacedFile* const placed = container < first_.size() ? first_[container] : nullptr;
        if (placed != nullptr && placed->isLineWork)
            CheckColours(placement, *placed);
        else
            findings_.Tell(kContainer, At(kEntryWindow.offset), [&] {
                return Entry() + " is a CT window in entry " + std::to_string(container) +
                       ", which " +
                       (container < first_.size() ? "has no LW picture."
                                                  : "is not in front of it.");
            });
    }

    void CheckColours(const Placement& placement, const PlacedFile& container)
    {
        if (!container.colours)
            return;
        for (std::size_t i = 0; i < placement.colours.size(); ++i)
            if (placement.colours[i] > *container.colours)
                findings_.Tell(kColour, At(kEntryColours.offset + i), [&] {
                    return Entry() + " shows through colour " +
                           std::to_string(placement.colours[i]) + " of a picture with " +
                           tympan::CountOf(*container.colours, "colour") + ".";
                });
    }

    CFile& page_;
    Findings& findings_;
    std::uint64_t length_;
    SizeInInches size_;
    std::size_t index_ = 0;
    std::map<CString, PlacedFile> files_; // by path
    std::vector<const PlacedFile*>
        first_; // of the entries that a window can name; null: no picture
};

bool Accepts(CFile& file, const CString&)
{
    return PageFileInterface::isTypeOf(file);
}

void Prove(CFile& file, Findings& findings)
{
    PageCheck(file, findings).Check();
}

} // namespace

FormatCheck PageFileCheck()
{
    return { Accepts, Prove, page_rule::kAll };
}

} // namespace tympan
