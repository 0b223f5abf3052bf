// Line work as runs: opening, run stream and crop.
#include "bench/lw_sides.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace tympan::bench {

namespace {

constexpr std::size_t kWholeWidth = 4096; // a row of the run stream is a multiple of it wide

Contender Fastest(const std::vector<Contender>& contenders)
{
    const auto least = [](const Contender& contender) {
        const double times[] = { SecondsOf(contender), SecondsOf(contender), SecondsOf(contender) };
        return *std::min_element(std::begin(times), std::end(times));
    };
    std::vector<double> times;
    std::transform(contenders.begin(), contenders.end(), std::back_inserter(times), least);
    return contenders[static_cast<std::size_t>(std::min_element(times.begin(), times.end()) -
                                               times.begin())];
}

// The same contender with blocks of several sizes; the fastest.
template <typename Make>
Contender FastestBlock(Make&& make)
{
    std::vector<Contender> contenders;
    for (const std::size_t size : { 64U << 10U, 256U << 10U, 512U << 10U, 1U << 20U })
        contenders.push_back(make(size));
    return Fastest(contenders);
}

Contender WritingInBlocks(const std::string& path, std::vector<std::uint8_t> bytes)
{
    const auto kept = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const auto file = std::make_shared<std::unique_ptr<NewFile>>();
    const auto anew = [=] {
        file->reset();
        std::filesystem::remove(path);
        *file = std::make_unique<NewFile>(path);
    };
    return FastestBlock([&](std::size_t size) {
        const auto write = [=] {
            for (std::size_t at = 0; at < kept->size(); at += size)
                (*file)->Write(std::span(*kept).subspan(at, std::min(size, kept->size() - at)));
        };
        return Contender{ write, anew };
    });
}

// The object found where the last row stands, and so where all do.
void RequireLastRow(LWFileInterface& object, const LwPicture& picture)
{
    const std::span<const Run> runs = picture.Row(kLwSize.height - 1);
    std::vector<std::uint8_t> row(runs.size_bytes() + kLwDelimiterBytes * 2);
    Require(object.GetOriginalPictureRow(row.data(), kLwSize.height - 1, false) == runs.size() &&
                std::memcmp(row.data() + kLwDelimiterBytes, runs.data(), runs.size_bytes()) == 0,
            "the last row is wrong");
}

std::size_t StreamRoom(LWFileInterface& object)
{
    return object.GetLWBufferSize(0, kLwSize.height - 1, 1, 0, true);
}

// Gives the stream's bytes.
std::size_t Stream(Working& work)
{
    unsigned char* end = work.buffer.data();
    unsigned long* offsets = work.offsets.data();
    const unsigned long next = work.object->GetLWPictureRows(
        end, 0, kLwSize.height - 1, offsets, 0, LwPicture::kPlate, 0, 1, kWhite, 0, true);
    Require(next == kLwSize.height, "the library gave no stream");
    return static_cast<std::size_t>(end - work.buffer.data());
}

void RequireStream(const Working& work, std::size_t bytes)
{
    const std::size_t white = kWholeWidth - kLwSize.width % kWholeWidth;
    std::vector<std::uint8_t> expected(white + kLwSize.width, kWhite);
    const std::span<std::uint8_t> picturePart = std::span(expected).subspan(white);
    const std::span<const std::uint8_t> stream = std::span(work.buffer).first(bytes);
    PlainRows rows(stream, expected.size());
    for (unsigned int row = 0; row < kLwSize.height; ++row) {
        ExpandRow(work.picture->Row(row), Inks(), picturePart);
        Require(work.offsets[row] == rows.Position(), "a row's offset is wrong");
        const std::span<const std::uint8_t> given = rows.Next();
        Require(std::equal(given.begin(), given.end(), expected.begin()), "the stream is wrong");
    }
    Require(rows.Position() == bytes, "the stream is too long");
}

// What a crop keeps, counted from 0, the ends left out.
struct Kept {
    unsigned int left, right, top, bottom;
};

constexpr Kept kMiddle{ kLwSize.width / 10, kLwSize.width / 10 * 9, kLwSize.height / 10,
                        kLwSize.height / 10 * 9 };
constexpr Kept kFullWidth{ 0, kLwSize.width, kMiddle.top, kMiddle.bottom };

struct Cropping {
    void MakeTarget()
    {
        target.reset();
        std::filesystem::remove(path);
        target = std::make_unique<CFile>(path.c_str(),
                                         CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
    }
    void Crop()
    {
        CompressParameters crop{ kept.left + 1.0, static_cast<double>(kept.right), kept.top + 1.0,
                                 static_cast<double>(kept.bottom) };
        object->CreateCropedLWFile(object->FileHandle(), *target, &crop);
    }

    Kept kept;
    std::string path;
    std::unique_ptr<LWFileInterface> object;
    std::unique_ptr<CFile> target;
};

void RequireCrop(const LwPicture& picture, const Kept& kept, const std::string& path)
{
    const std::vector<std::uint8_t> bytes = test::BytesOf(path);
    const auto start = static_cast<std::size_t>(LwFirstRow(bytes.at(kLwColoursNumber.offset)));
    Require(bytes.size() > start, "nothing was cropped");
    const std::span<const std::uint8_t> cropped = std::span(bytes).subspan(start);
    PlainRows rows(cropped, kept.right - kept.left);
    std::vector<std::uint8_t> expected(kLwSize.width);
    for (unsigned int row = kept.top; row < kept.bottom; ++row) {
        ExpandRow(picture.Row(row), Indexes(), expected);
        const std::span<const std::uint8_t> given = rows.Next();
        Require(std::equal(given.begin(), given.end(), expected.begin() + kept.left),
                "the crop is wrong");
    }
    Require(rows.Position() == cropped.size(), "the crop is too long");
}

Sides Crop(const Picture& picture, const Kept& kept, const std::string& folder)
{
    const auto crop =
        std::make_shared<Cropping>(Cropping{ kept, folder + "crop.lw", Open(*picture), nullptr });
    crop->MakeTarget();
    crop->Crop();
    return { WritingInBlocks(folder + "written.lw", test::BytesOf(crop->path)),
             { [=] { crop->Crop(); }, [=] { crop->MakeTarget(); },
               [=] { RequireCrop(*picture, kept, crop->path); } } };
}

} // namespace

Contender ReadingInBlocks(const Picture& picture,
                          const std::function<void(std::span<const std::uint8_t>)>& use)
{
    const auto file = std::make_shared<RawFile>(picture->Path());
    return FastestBlock([&](std::size_t size) {
        const auto block = std::make_shared<std::vector<std::uint8_t>>(TouchedMemory(size));
        return Contender{ [=] { file->ReadThrough(picture->FileBytes(), *block, use); } };
    });
}

std::unique_ptr<LWFileInterface> Open(const LwPicture& picture)
{
    std::unique_ptr<LWFileInterface> object(create_lw_file_object(picture.Path().c_str(), true));
    Require(object != nullptr && object->ObjectStatus(), "the library can't open the picture");
    return object;
}

Working::Working(Picture lwPicture, std::size_t bytes)
    : picture(std::move(lwPicture)), object(Open(*picture)), buffer(TouchedMemory(bytes)),
      offsets(kLwSize.height)
{}

Sides Opening(const Picture& picture)
{
    const auto object = std::make_shared<std::unique_ptr<LWFileInterface>>();
    return { ReadingInBlocks(picture),
             { [=] { *object = Open(*picture); }, [=] { object->reset(); },
               [=] { RequireLastRow(**object, *picture); } } };
}

Sides Checking(const Picture& picture)
{
    const auto work = std::make_shared<Working>(picture, 0);
    return { ReadingInBlocks(picture),
             { [=] { Require(work->object->FileValidityCheck(), "the check failed"); },
               {},
               [=] { RequireLastRow(*work->object, *picture); } } };
}

Sides CountingRoom(const Picture& picture)
{
    const auto work = std::make_shared<Working>(picture, 0);
    const std::size_t least = picture->FileBytes() - static_cast<std::size_t>(LwFirstRow(255));
    return { ReadingInBlocks(picture),
             { [=] { Require(StreamRoom(*work->object) > least, "the room is too small"); } } };
}

Sides Streaming(const Picture& picture)
{
    const auto work = std::make_shared<Working>(picture, StreamRoom(*Open(*picture)));
    const std::size_t bytes = Stream(*work);
    const auto source = std::make_shared<const std::vector<std::uint8_t>>(TouchedMemory(bytes));
    const auto copy = [=] {
        std::memcpy(work->buffer.data(), source->data(), bytes);
        benchmark::ClobberMemory();
    };
    const auto stream = [=] { Require(Stream(*work) == bytes, "the stream's size changed"); };
    return { { copy }, { stream, {}, [=] { RequireStream(*work, bytes); } } };
}

Sides CropMiddle(const Picture& picture, const std::string& folder)
{
    return Crop(picture, kMiddle, folder);
}

Sides CropFullWidth(const Picture& picture, const std::string& folder)
{
    return Crop(picture, kFullWidth, folder);
}

} // namespace tympan::bench
