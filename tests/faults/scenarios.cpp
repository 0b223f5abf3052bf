#include "faults/scenarios.h"

#include "tympan/check.h"
#include "tympan/inspect.h"

namespace tympan::test {

Bytes AsBytes(const std::vector<unsigned char>& bytes)
{
    const auto view = std::as_bytes(std::span(bytes));
    return { view.begin(), view.end() };
}

std::vector<Field> CommonHeaderFields()
{
    return { { 0, 80, 2, FieldKind::text },    { 0, 1024, 1, FieldKind::byte },
             { 0, 1025, 1, FieldKind::byte },  { 0, 1026, 2, FieldKind::little16 },
             { 0, 1028, 14, FieldKind::text }, { 0, 1042, 14, FieldKind::text },
             { 0, 1056, 12, FieldKind::text }, { 0, 1068, 12, FieldKind::text } };
}

std::vector<Field> DirectoryFields(const Bytes& file)
{
    const auto number = [&](std::size_t at, std::size_t size) {
        std::size_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value |= std::to_integer<std::size_t>(file.at(at + i)) << (8 * i);
        return value;
    };
    const std::size_t start = number(4, 4);
    const std::size_t end = start + 2 + 12 * number(start, 2);
    std::vector<Field> fields{ { 0, 0, 2, FieldKind::little16 },
                               { 0, 2, 2, FieldKind::little16 },
                               { 0, 4, 4, FieldKind::little32 },
                               { 0, start, 2, FieldKind::little16 },
                               { 0, end, 4, FieldKind::little32 } };
    for (std::size_t entry = start + 2; entry < end; entry += 12) {
        fields.push_back({ 0, entry, 2, FieldKind::little16 });
        fields.push_back({ 0, entry + 2, 2, FieldKind::little16 });
        fields.push_back({ 0, entry + 4, 4, FieldKind::little32 });
        fields.push_back({ 0, entry + 8, 4, FieldKind::little32 });
        if (number(entry + 2, 2) == 3) // 16 bits in the place of 32
            fields.push_back({ 0, entry + 8, 2, FieldKind::little16 });
    }
    return fields;
}

void AskGeometry(Run& run, BasePictureIF& picture)
{
    run.Do("geometry", {}, [] { return 1; });
    run.StandsOnEarlier();
    run.Fold(std::uint64_t{ picture.FileHeightInPixels() });
    run.Fold(std::uint64_t{ picture.FileWidthInPixels() });
    run.Fold(picture.FileHeightInUnits());
    run.Fold(picture.FileWidthInUnits());
    run.Fold(picture.FileResolution());
    run.Fold(picture.ResolutionOnScanAxis());
    run.Fold(std::uint64_t{ picture.FileNumberOfSeparations() });
}

void AskFactory(Run& run, const char* path)
{
    run.Subject(nullptr);
    OpenedPicture opened;
    run.Do("any format", { kFile | kMemory, {}, true }, [&] {
        opened = OpenAnyPicture(path);
        return opened.isOpen ? 1 : 0;
    });
    const std::string_view format = opened.format;
    run.Fold(std::span(reinterpret_cast<const unsigned char*>(format.data()), format.size()));
    run.Do("any format's object destroyed", {}, [&] { return opened.picture.reset(), 1; });
}

void AskCheck(Run& run, const char* path)
{
    std::uint64_t findings = 0;
    run.Do("check", { kMemory, {}, true }, [&] {
        const CheckResult result = CheckFile(path, [&](const Finding&) { ++findings; });
        return result.verdict == Verdict::Valid || result.verdict == Verdict::ValidWithRemarks ? 1
                                                                                               : 0;
    });
    run.Fold(findings);
}

void Reopen(Run& run, BasePictureIF& picture, const char* path, const May& may)
{
    run.Subject(&picture);
    run.Do("closed", {}, [&] { return picture.ClosePictureFile(), 1; });
    run.Do("opened again", may,
           [&] { return picture.OpenPictureFile(path, true, true, nullptr) ? 1 : 0; });
}

bool IsSmall(double width, double height)
{
    constexpr double kMost = 1 << 16;
    return width >= 1 && height >= 1 && width <= kMost && height <= kMost &&
           width * height <= kMost;
}

} // namespace tympan::test
