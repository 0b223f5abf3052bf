#include "faults/scenarios.h"
#include "jpeg/jpeg_file.h"
#include "support/jpeg_samples.h"
#include "tympan/inspect.h"

namespace tympan::test {

namespace {

constexpr char kPath[] = "pic.jpg";
constexpr May kOpens{ kNothing, { 90001, 90040, 90043 }, true };
constexpr May kShows{ kReadFile | kMemory, { 90001, 90062 } };
constexpr May kTable{ kNothing, {}, true };
constexpr May kRows{ kReadFile, { 90001, 90062 } };

void AskTables(Run& run, JpegFileInterface& picture)
{
    unsigned short length = 0, dcLength = 0;
    unsigned char* table = nullptr;
    run.Do("quantization", kTable, [&] {
        length = picture.RetrieveQuantizationTable(table);
        return table != nullptr ? 1 : 0;
    });
    if (table != nullptr)
        run.Fold({ table, length });
    delete[] std::exchange(table, nullptr);
    run.Do("Huffman", kTable, [&] {
        length = picture.RetrieveHuffmanTable(table, dcLength);
        return table != nullptr && dcLength != 0 && dcLength != length ? 1 : 0;
    });
    if (table != nullptr)
        run.Fold({ table, length });
    delete[] table;
}

void AskObject(Run& run, JpegFileInterface& picture)
{
    std::unique_ptr<PictureRowsData> rows;
    run.Do("rows as an object", { kReadFile | kMemory, { 90001, 90062, 90063 } }, [&] {
        rows.reset(picture.GetPictureRows(Cyan, 17, 3, true));
        return rows != nullptr && rows->TraceStatus() == 0 ? 1 : 0;
    });
    if (rows != nullptr && rows->Data() != nullptr)
        run.Fold({ rows->Data(), rows->DataSize() });
    run.Do("the object destroyed", {}, [&] { return rows.reset(), 1; });
}

// An index that has been asked for what it hasn't refuses all objects from then on.
void AskObjectOfSoundIndex(Run& run, JpegFileInterface& picture)
{
    if (!run.HasRecovered())
        return AskObject(run, picture);
    const std::unique_ptr<JpegFileInterface> other(create_jpeg_file_object(kPath, true));
    AskObject(run, *other);
}

void Ask(Run& run, JpegFileInterface& picture)
{
    // Sizes of 0 tell alone that the frame header couldn't be read.
    run.Do("sizes", kTable, [&] { return picture.FileWidthInPixels(); });
    AskGeometry(run, picture);
    AskTables(run, picture);
    const auto bands = JpegSample{}.Index();
    Room band(bands[1].second - bands[1].first + 1);
    std::uint64_t given = run.Do("row", kRows, [&] {
        return picture.GetPictureRow(band.data(), 9, Black, 1, 1, band.size());
    });
    run.FoldGiven(band, given);
    std::size_t size = 0;
    for (const auto& [first, last] : bands)
        size += last - first + 1;
    Room all(size);
    unsigned long offsets[8] = {};
    unsigned int rowsInfo = 0;
    given = run.Do("rows", kRows, [&] {
        return picture.GetPictureRows(all.data(), 0, 26, rowsInfo, offsets, Cyan, all.size(),
                                      false);
    });
    run.FoldGiven(all, given);
    AskObjectOfSoundIndex(run, picture);
    unsigned long start = 0, end = 0;
    run.Do("places of blocks", { kNothing, { 90001, 90062 } },
           [&] { return picture.GetCompressedBlocksOffsetInfo(0, 26, start, end) ? 1 : 0; });
    run.Fold(std::uint64_t{ end });
    run.Do("index", { kFile, {}, true }, [&] { return IndexOf(picture).has_value() ? 1 : 0; });
}

void Read(Run& run)
{
    AskFactory(run, kPath);
    AskCheck(run, kPath);
    PlayReading<JpegFileInterface>(
        run, kPath, { kOpens, kOpens, kShows }, [] { return create_jpeg_file_object(kPath, true); },
        [&](JpegFileInterface& picture) { Ask(run, picture); });
}

void WriteStream(Run& run, JpegFileInterface& picture)
{
    const JpegSample sample;
    const JpegSample::Bytes stream = sample.Stream();
    run.Do("stream", { kFile }, [&] {
        picture.JpegFileHandle()->Write(stream.data(), static_cast<UINT>(stream.size()));
        return 1;
    });
    run.Do("blocks", { kMemory }, [&] {
        for (const auto& [first, last] : sample.Index())
            picture.StoreCompressedLinesBlock({ first, last });
        picture.StorePictureParams(10.0, 10.0, 1.0, 2.7, 2.0, 27.0, 20.0);
        return 1;
    });
}

void Write(Run& run)
{
    PlayWriting<JpegFileInterface>(
        run, "new.jpg", "new.bin", kOpens, [] { return create_jpeg_file_object("new.jpg", false); },
        [&](JpegFileInterface& picture) { WriteStream(run, picture); });
}

std::vector<Field> Fields(const JpegSample& sample)
{
    std::vector<Field> fields{ { 1, 0, 1, FieldKind::byte },
                               { 1, 1, 14, FieldKind::text },
                               { 1, 15, 14, FieldKind::text },
                               { 1, 29, 4, FieldKind::little32 } };
    for (std::size_t at = 256; at < sample.SideFile().size(); at += 4)
        fields.push_back({ 1, at, 4, FieldKind::little32 });
    for (std::size_t at = 2; at + 2 <= sample.Head().size(); ++at)
        fields.push_back({ 0, at, 2, FieldKind::little16 });
    return fields;
}

} // namespace

std::vector<Scenario> JpegScenarios()
{
    const JpegSample sample;
    return { { .name = "JPEG read",
               .files = { { kPath, AsBytes(sample.Stream()) },
                          { "pic.bin", AsBytes(sample.SideFile()) } },
               .play = Read,
               .fields = Fields(sample),
               .changedBytes = { sample.Head().size() },
               .heads = { sample.Head().size() } },
             { .name = "JPEG write", .files = {}, .play = Write } };
}

} // namespace tympan::test
