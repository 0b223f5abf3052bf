#include "faults/lw_questions.h"

#include <vector>

namespace tympan::test {

namespace {

constexpr char kNewPath[] = "new.lw";
constexpr std::uint64_t kMostRoom = 1U << 16U;
constexpr May kOpens{ kNothing, { 90001, 90025, 90066 }, true };
constexpr May kShows{ kNothing, { 90001, 90020, 90025 } };
constexpr May kRow{ kNothing, { 90001, 90020, 90024 } };
constexpr May kRows{ kNothing, { 90001, 90020, 90025 } };

// The steps on the rows of a picture whose sizes are small; rooms are as large as they are told.
class LwRowQuestions {
  public:
    LwRowQuestions(Run& run, LWFileInterface& picture)
        : run_(run), picture_(picture), width_(picture.FileWidthInPixels()),
          height_(static_cast<unsigned int>(picture.FileHeightInPixels())), offsets_(height_)
    {}

    void AskPixels()
    {
        const double across = picture_.ResolutionOnScanAxis();
        const double down = picture_.ResolutionOnXScanAxis();
        for (const double ratio : { 1.0, 2.0 }) {
            Room row(width_ * static_cast<std::size_t>(ratio));
            const std::uint64_t given = run_.Do("row", kRow, [&] {
                return picture_.GetPictureRow(row.data(), height_ - 1, Cyan, across * ratio, down,
                                              row.size());
            });
            // A row whose last run passes the width tells more pixels than it stores.
            run_.FoldGiven(row, std::min<std::uint64_t>(given, width_) *
                                    static_cast<std::uint64_t>(ratio));
        }
        Room rows(width_ * height_);
        unsigned int rowsInfo = 0;
        const std::uint64_t given = run_.Do("rows", kRows, [&] {
            return picture_.GetPictureRows(rows.data(), 0, height_, rowsInfo, offsets_.data(),
                                           Black, rows.size(), false);
        });
        run_.FoldGiven(rows, given);
        run_.Fold(std::uint64_t{ rowsInfo });
    }

    void AskOriginalRow()
    {
        Room room(SizeOf("size of a row", height_ - 1, 1, 0, false));
        if (room.size() == 0)
            return;
        const std::uint64_t runs = run_.Do("original row", kRows, [&] {
            return picture_.GetOriginalPictureRow(room.data(), height_ - 1, true);
        });
        run_.FoldGiven(room, runs == 0 ? 0 : 2 * runs + 4);
    }

    void AskPlainStream()
    {
        const std::size_t size = SizeOf("size of all rows", 0, 1, 0, false);
        if (size == 0)
            return;
        Room room(size - 2 + std::size_t{ 4 } * height_); // the size is 2 bytes too many
        const std::uint64_t done = run_.Do("plain stream", kRows, [&] {
            return picture_.GetLWPictureRows(room.data(), 0, height_ - 1, offsets_.data(), Magenta,
                                             LwRowPadding{ 1, 3, 1 }, 0, true);
        });
        run_.FoldGiven(room, done == 0 ? 0 : room.size());
    }

    void AskPlacingStream()
    {
        Room room(SizeOf("size of two copies", 0, 2, 7, true));
        if (room.size() == 0)
            return;
        unsigned char* out = room.data();
        unsigned long* places = offsets_.data();
        run_.Do("placing stream", kRows, [&] {
            return picture_.GetLWPictureRows(out, 0, height_ - 1, places, 0, Black, 7, 2, 255, 0,
                                             true);
        });
        const auto given = static_cast<std::uint64_t>(out - room.data());
        run_.FoldGiven(room, given);
        run_.Fold(given);
    }

  private:
    // 0 for more than a test makes room for.
    std::size_t SizeOf(const char* name, unsigned int first, unsigned int copies, unsigned long gap,
                       bool complete)
    {
        const std::uint64_t size = run_.Do(name, { kNothing, { 90001 } }, [&] {
            return picture_.GetLWBufferSize(first, height_ - 1, copies, gap, complete);
        });
        return size <= kMostRoom ? static_cast<std::size_t>(size) : 0;
    }

    Run& run_;
    LWFileInterface& picture_;
    std::size_t width_;
    unsigned int height_;
    std::vector<unsigned long> offsets_;
};

bool HasSmallRows(LWFileInterface& picture)
{
    return IsSmall(static_cast<double>(picture.FileWidthInPixels()),
                   static_cast<double>(picture.FileHeightInPixels()));
}

void Crop(Run& run, LWFileInterface& picture)
{
    CompressParameters crop{ 2, 4, 2, 3 };
    run.Do("crop", { kFile | kMemory }, [&] {
        CFile target(kNewPath, CFile::modeCreate | CFile::modeWrite);
        picture.CreateCropedLWFile(picture.FileHandle(), target, &crop);
        target.Close();
        return 1;
    });
    run.LookAt("the crop", kNewPath);
}

void Ask(Run& run, LWFileInterface& picture)
{
    AskGeometry(run, picture);
    AskLw(run, picture);
    run.Do("rows proved", kOpens, [&] { return picture.FileValidityCheck() ? 1 : 0; });
}

void Read(Run& run)
{
    AskFactory(run, kLwPath);
    AskCheck(run, kLwPath);
    PlayReading<LWFileInterface>(
        run, kLwPath, { kOpens, kOpens, kShows },
        [] { return create_lw_file_object(kLwPath, true); },
        [&](LWFileInterface& picture) { Ask(run, picture); });
}

void WriteRows(Run& run, LWFileInterface& picture)
{
    auto& record = dynamic_cast<LwPictureParameters&>(*picture.PictureParams());
    record.WidthInPixels(4.0);
    record.HeightInPixels(2.0);
    record.NumberOfSeparations(1);
    run.Do("header", { kFile }, [&] {
        record.LwFileName("new");
        return record.SaveHader(picture.FileHandle()), 1;
    });
    unsigned char pixels[] = { 5, 5, 7, 64 };
    unsigned char row[] = { 0, 0, 1, 4, 0, 0 };
    run.Do("a row of pixels", { kFile | kMemory },
           [&] { return picture.SetLWPictureRow(pixels, picture.FileHandle(), 4); });
    run.Do("a row", { kFile },
           [&] { return picture.SaveLWRow(picture.FileHandle(), row, sizeof row), 1; });
    run.Do("a run", { kFile }, [&] { return picture.SaveLWRun(picture.FileHandle(), 2, 9), 1; });
}

void Write(Run& run)
{
    PlayWriting<LWFileInterface>(
        run, kNewPath, nullptr, kOpens, [] { return create_lw_file_object(kNewPath, false); },
        [&](LWFileInterface& picture) { WriteRows(run, picture); });
}

} // namespace

LwPicture LwFaultSample()
{
    return {
        .width = 5,
        .height = 3,
        .colours = { { { 10, 20, 30, 40 } }, { { 50, 60, 70, 80 } }, { { 9, 8, 7, 6 }, 0x10 } },
        .rows = { { { 1, 3 }, { 2, 2 } }, { { 3, 5 } }, { { 2, 1 }, { 1, 1 }, { 3, 3 } } }
    };
}

std::vector<Field> LwFields()
{
    const LwPicture sample = LwFaultSample();
    std::vector<Field> fields = CommonHeaderFields();
    fields.push_back({ 0, 1080, 1, FieldKind::byte });
    for (std::size_t at = 2048; at < sample.Start(); ++at)
        fields.push_back({ 0, at, 1, FieldKind::byte });
    for (std::size_t at = sample.Start(); at < sample.Bytes().size(); at += 2)
        fields.push_back({ 0, at, 2, FieldKind::run });
    return fields;
}

void AskPlacingStream(Run& run, LWFileInterface& picture)
{
    if (HasSmallRows(picture))
        LwRowQuestions(run, picture).AskPlacingStream();
}

void AskLw(Run& run, LWFileInterface& picture)
{
    if (HasSmallRows(picture)) {
        LwRowQuestions questions(run, picture);
        questions.AskPixels();
        questions.AskOriginalRow();
        questions.AskPlainStream();
        questions.AskPlacingStream();
    }
    run.Draw("display", kShows, [&](CDC& dc) { picture.Display(0, 2, dc); });
    Crop(run, picture);
    // Without memory for its refusal it can only say that.
    run.Do("colour", { kRefusal | kMemory }, [&] { return 1 + picture.GetColorValue(1, Cyan); });
}

std::vector<Scenario> LwScenarios()
{
    return { { .name = "LW read",
               .files = { { kLwPath, AsBytes(LwFaultSample().Bytes()) } },
               .play = Read,
               .fields = LwFields(),
               .heads = { LwFaultSample().Start() } },
             { .name = "LW write", .files = {}, .play = Write } };
}

} // namespace tympan::test
