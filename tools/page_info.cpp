#include "page_info.h"

#include "failure.h"
#include "names.h"
#include "page_entry.h"
#include "picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>

namespace tympan::tool {

namespace {

struct TypeName {
    PlacementType type;
    const char* name;
};
constexpr std::array kTypeNames{
    TypeName{ PlacementType::picture, "picture" },
    TypeName{ PlacementType::ctWindow, "CT window" },
    TypeName{ PlacementType::lineWork, "line work" },
};

const char* TypeNameOf(std::uint8_t typeByte)
{
    const auto* const found =
        std::find_if(kTypeNames.begin(), kTypeNames.end(), [&](const TypeName& one) {
            return static_cast<std::uint8_t>(one.type) == typeByte;
        });
    return found == kTypeNames.end() ? "unknown" : found->name;
}

std::shared_ptr<const PlacedFile> Open(const std::string& path)
{
    const Opening opening = TryOpenPicture(path, "");
    PlacedFile file{ path, opening.opened.format, nullptr, "", "" };
    if (opening.failure)
        file.problem = path + ": " + opening.failure->WhatHappened();
    if (!opening.opened.isOpen)
        return std::make_shared<const PlacedFile>(std::move(file));
    file.header = Json{ { "format", file.format } };
    AddGeometry(*opening.opened.picture, file.header);
    file.text = std::string(file.format) + ", " + PixelsText(*opening.opened.picture);
    return std::make_shared<const PlacedFile>(std::move(file));
}

// A page on a page isn't opened, since its entries might place it again.
PlacedFile ClosedPage(const std::string& path)
{
    constexpr const char* kFormat = "Page";
    return { path, kFormat, Json{ { "format", kFormat } }, kFormat, "" };
}

bool HoldsPage(const PageEntryReading& reading)
{
    const auto* const entry = dynamic_cast<const PagePictureEntry*>(reading.entry.get());
    return entry != nullptr &&
           dynamic_cast<const PageFileInterface*>(entry->PictureHandle()) != nullptr;
}

class EntryTeller {
  public:
    explicit EntryTeller(const PagePaths& paths) : paths_(paths) {}

    ToldEntry Tell(const PageEntryReading& reading)
    {
        ToldEntry told{ reading.typeByte, reading.placement, nullptr, ProblemOf(reading, paths_) };
        if (told.placement)
            told.file = FileOf(reading);
        if (told.file == nullptr)
            return told;
        if (!told.file->problem.empty())
            told.problem = told.file->problem;
        else if (!told.problem.empty())
            told.problem = told.file->path + ": a page can't place a " +
                           std::string(told.file->format) + " file";
        return told;
    }

  private:
    std::shared_ptr<const PlacedFile> FileOf(const PageEntryReading& reading)
    {
        const auto path = paths_.Find(reading.placement->path.GetString());
        if (!path)
            return nullptr;
        if (HoldsPage(reading))
            return std::make_shared<const PlacedFile>(ClosedPage(*path));
        std::shared_ptr<const PlacedFile>& file = files_[*path];
        if (file == nullptr)
            file = Open(*path);
        return file;
    }

    const PagePaths& paths_;
    std::map<std::string, std::shared_ptr<const PlacedFile>> files_;
};

void AddPlacement(const Placement& placement, Json& object)
{
    object["x"] = NumberOrNull(placement.xOffset);
    object["y"] = NumberOrNull(placement.yOffset);
    object["width"] = NumberOrNull(placement.width);
    object["height"] = NumberOrNull(placement.height);
    object["rotation"] = NumberOrNull(placement.rotation);
    object["container"] = NumberOrNull(placement.container);
    const bool isWindow = placement.type == PlacementType::ctWindow;
    object["colors"] = isWindow ? Json(placement.colours) : Json(nullptr);
}

Json AsJson(const ToldEntry& entry)
{
    Json object;
    object["type"] = TypeNameOf(entry.typeByte);
    if (entry.placement) {
        AddPath(object, "path", entry.placement->path.GetString());
        object["resolved"] = nullptr;
        if (entry.file != nullptr)
            AddPath(object, "resolved", entry.file->path);
        AddPlacement(*entry.placement, object);
        object["picture"] = entry.file != nullptr ? entry.file->header : Json(nullptr);
    }
    if (!entry.problem.empty())
        object["error"] = WithReplacements(entry.problem);
    return object;
}

// ---- as text

std::string Inches(double first, double second)
{
    constexpr int kDecimals = 3;
    return Times(NumberText(first, kDecimals), NumberText(second, kDecimals)) + " inches";
}

std::string WindowText(const Placement& placement)
{
    std::string text = "over entry " + std::to_string(placement.container.value_or(0));
    const char* separator = ", through colours ";
    for (const std::uint8_t colour : placement.colours) {
        text += separator + std::to_string(colour);
        separator = ", ";
    }
    return text;
}

void AddLines(const Placement& placement, Lines& lines)
{
    constexpr int kDecimals = 4;
    std::string place = Inches(placement.width, placement.height) + ", " +
                        Inches(placement.xOffset, placement.yOffset) +
                        " from the left and upper edge";
    if (placement.rotation != 0.0)
        place += ", turned by " + NumberText(placement.rotation, kDecimals) + " degrees";
    lines.emplace_back("", place);
    if (placement.type == PlacementType::ctWindow)
        lines.emplace_back("", WindowText(placement));
}

void AddLines(std::size_t index, const ToldEntry& entry, Lines& lines)
{
    const std::string path = entry.placement ? entry.placement->path.GetString() : "";
    lines.emplace_back(std::to_string(index) + " " + TypeNameOf(entry.typeByte), Shown(path));
    if (entry.file != nullptr)
        lines.emplace_back("", Shown(entry.file->path));
    if (entry.file != nullptr && !entry.file->text.empty())
        lines.emplace_back("", entry.file->text);
    if (entry.placement)
        AddLines(*entry.placement, lines);
    if (!entry.problem.empty())
        lines.emplace_back("", "Not taken: " + Shown(entry.problem));
}

} // namespace

std::vector<ToldEntry> TellEntries(const std::string& path, const PageFileInterface& page,
                                   const PagePaths& paths)
{
    return Guard(path, [&] {
        CFile file(path.c_str(), CFile::modeRead);
        const std::size_t count =
            std::min<std::size_t>(page.GetEntriesNumber(), RoomForPageEntries(file));
        EntryTeller teller(paths);
        std::vector<ToldEntry> entries;
        for (std::size_t index = 0; index < count; ++index)
            entries.push_back(teller.Tell(ReadPageEntry(file, static_cast<unsigned short>(index))));
        return entries;
    });
}

std::string ProblemsOf(const std::vector<ToldEntry>& entries)
{
    const auto hasProblem = [](const ToldEntry& entry) { return !entry.problem.empty(); };
    const auto first = std::find_if(entries.begin(), entries.end(), hasProblem);
    if (first == entries.end())
        return "";
    const auto more = std::count_if(first + 1, entries.end(), hasProblem);
    return "entry " + std::to_string(first - entries.begin()) + ": " + first->problem +
           (more > 0 ? "; entries with a problem besides: " + std::to_string(more) : "");
}

Json AsJson(const std::vector<ToldEntry>& entries)
{
    Json array = Json::array();
    for (const ToldEntry& entry : entries)
        array.push_back(AsJson(entry));
    return array;
}

Lines LinesOf(const std::vector<ToldEntry>& entries)
{
    Lines lines{ { "Entries", std::to_string(entries.size()) } };
    for (std::size_t index = 0; index < entries.size(); ++index)
        AddLines(index, entries[index], lines);
    return lines;
}

} // namespace tympan::tool
