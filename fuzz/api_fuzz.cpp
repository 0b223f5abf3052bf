// A script of calls drawn from the input, on objects of all formats that are open, closed or have
// failed, in any order and with odd arguments, while a drawn file operation fails: nothing is thrown
// but what the operation announces, and afterwards a fresh object does its work.
//
// The first bytes draw the fault and what is spoilt in the files; each call begins with a byte.
#include "core/failure_guard.h"
#include "ct/ct_file.h"
#include "faults/faulty_files.h"
#include "fuzz/any_file.h"
#include "fuzz/tiff_it_files.h"
#include "jpeg/jpeg_file.h"
#include "lw_variant/velmar_lw_file.h"
#include "page/page_file.h"
#include "support/canvas.h"
#include "support/jpeg_samples.h"
#include "support/lw_samples.h"
#include "support/page_samples.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tympan/inspect.h"

#include <array>
#include <memory>
#include <vector>

namespace {

using tympan::Caught;
using tympan::FailureRow;
using tympan::FailureTable;
using tympan::fuzz::Drawn;
using tympan::test::Require;
using Object = std::unique_ptr<BasePictureIF>;

// What operations announce.
constexpr FailureRow kFileFailures[] = { { Caught::File, 0, nullptr } };
constexpr FailureRow kBandFailures[] = { { Caught::ReadFile, 0, nullptr },
                                         { Caught::IllegalSeparation, 0, nullptr } };
constexpr FailureRow kColourFailures[] = { { Caught::IllegalSeparation, 0, nullptr },
                                           { Caught::IllegalColorIndex, 0, nullptr } };
constexpr FailureRow kRangeFailures[] = { { Caught::IllegalRows, 0, nullptr } };

constexpr const char* kPaths[] = { "picture.ct",  "picture.lw", "picture.jpg", "page",
                                   "picture.tif", "work.tif",   "missing",     "",
                                   "new.jpg" };
constexpr std::size_t kFiles = 6;

void PutSamples(tympan::test::MemoryFileSystem& files)
{
    using namespace tympan::test;
    const PageSample page{ .entries = {
                               { .path = "picture.ct" },
                               { .type = 5, .path = "picture.lw" },
                               { .type = 2, .path = "picture.ct", .window = { 1, 1, 0 } } } };
    const JpegSample jpeg;
    const std::vector<unsigned char> all[kFiles] = { CtSample{}.Bytes(),
                                                     LwPicture{}.Bytes(),
                                                     jpeg.Stream(),
                                                     page.Bytes(),
                                                     tympan::fuzz::ContinuousToneFile(),
                                                     tympan::fuzz::LineWorkFile() };
    for (std::size_t i = 0; i < kFiles; ++i)
        tympan::fuzz::Put(files, kPaths[i], all[i]);
    tympan::fuzz::Put(files, "picture.bin", jpeg.SideFile());
}

/// Sets bytes of one of the files.
void Spoil(tympan::test::MemoryFileSystem& files, Drawn& drawn)
{
    const char* const path = kPaths[drawn.Below(kFiles)];
    tympan::test::Bytes bytes = files.Contents(path);
    for (std::size_t left = drawn.Below(4); left != 0; --left) {
        const std::size_t at = drawn.Below(65536) % bytes.size();
        bytes[at] = std::byte{ drawn.Byte() };
    }
    files.Put(path, bytes);
}

tympan::test::FilePlan DrawnPlan(Drawn& drawn)
{
    tympan::test::FilePlan plan;
    plan.fault = static_cast<tympan::test::FileFault>(drawn.Below(5));
    plan.number = 1 + drawn.Below(64);
    plan.onwards = drawn.Coin();
    return plan;
}

class Script {
  public:
    Script(Drawn& drawn, tympan::test::FaultyFileSystem& files) : drawn_(drawn), files_(files) {}

    void Play()
    {
        for (int calls = 0; calls < 48 && !drawn_.IsEmpty(); ++calls)
            CallOne();
    }

  private:
    /// An unannounced failure passes on and ends the program.
    template <typename Work>
    void Announced(FailureTable failures, Work&& work)
    {
        tympan::Guarded(tympan::NoTrace(), failures, std::forward<Work>(work));
    }
    template <typename Picture>
    Picture* Slot()
    {
        return dynamic_cast<Picture*>(objects_[drawn_.Below(objects_.size())].get());
    }
    const char* Path() { return kPaths[drawn_.Below(std::size(kPaths))]; }
    /// A row of the pictures, one behind them, or far from them.
    unsigned int Row() { return drawn_.Coin() ? drawn_.Below(30) : ~0U - drawn_.Below(3); }
    ColorSeparationType Separation() { return static_cast<ColorSeparationType>(drawn_.Below(8)); }
    static bool IsSmall(const BasePictureIF& picture)
    {
        return picture.FileWidthInPixels() <= 64 && picture.FileHeightInPixels() <= 64;
    }

    void CallOne()
    {
        using Call = void (Script::*)();
        static constexpr Call kCalls[] = {
            &Script::Make,  &Script::Make,   &Script::Open, &Script::Open,  &Script::Close,
            &Script::Save,  &Script::Draw,   &Script::Row1, &Script::Rows,  &Script::RowObjects,
            &Script::Store, &Script::Sizes,  &Script::Tell, &Script::AskCt, &Script::AskLw,
            &Script::Crop,  &Script::AskAll, &Script::Jpeg, &Script::Page,  &Script::Files,
        };
        (this->*kCalls[drawn_.Below(std::size(kCalls))])();
    }

    void Make()
    {
        Object& object = objects_[drawn_.Below(objects_.size())];
        const std::uint32_t kind = drawn_.Below(9);
        const bool input = drawn_.Below(4) != 0;
        const char* const path = Path();
        object.reset();
        Announced(kFileFailures, [&] {
            switch (kind) {
            case 0: object.reset(create_ct_file_object(path, input)); break;
            case 1: object.reset(create_lw_file_object(path, input)); break;
            case 2: object.reset(create_velmar_lw_file_object(path, input)); break;
            case 3: object.reset(create_jpeg_file_object(path, input)); break;
            case 4: object = std::make_unique<PageFileInterface>(); break;
            case 5: object = std::make_unique<TiffFileInterface>(); break;
            case 6: object = std::make_unique<TiffItCtP1Interface>(path, input); break;
            case 7: object = std::make_unique<TiffItLwP1Interface>(path, input); break;
            default: object.reset(create_picture_object(path)); break;
            }
        });
    }
    void Open()
    {
        BasePictureIF* const object = Slot<BasePictureIF>();
        const char* const path = Path();
        const bool input = drawn_.Below(4) != 0, reopen = drawn_.Coin();
        CFileException filled;
        CFileException* const error = drawn_.Below(4) == 0 ? &filled : nullptr;
        if (object != nullptr)
            Announced(kFileFailures, [&] { object->OpenPictureFile(path, input, reopen, error); });
    }
    void Close()
    {
        if (BasePictureIF* const object = Slot<BasePictureIF>())
            Announced(kFileFailures, [&] { object->ClosePictureFile(); });
    }
    void Save()
    {
        if (BasePictureIF* const object = Slot<BasePictureIF>())
            Announced(kFileFailures, [&] { object->SavePictureParams(); });
    }
    void Draw()
    {
        BasePictureIF* const object = Slot<BasePictureIF>();
        const unsigned int first = Row(), last = Row();
        tympan::test::Canvas canvas(8, 8);
        if (object != nullptr)
            Announced(kBandFailures, [&] { object->Display(first, last, canvas.dc); });
    }
    void Row1()
    {
        auto* const picture = Slot<PictureFileInterface>();
        const unsigned int row = Row();
        const ColorSeparationType separation = Separation();
        const double times = drawn_.Below(5) / 2.0;
        std::vector<unsigned char> room(4096);
        if (picture != nullptr && IsSmall(*picture))
            Announced(kBandFailures, [&] {
                picture->GetPictureRow(room.data(), row, separation,
                                       picture->ResolutionOnScanAxis() * times,
                                       picture->ResolutionOnXScanAxis(), room.size());
            });
    }
    void Rows()
    {
        auto* const picture = Slot<PictureFileInterface>();
        const unsigned int first = Row(), last = first + drawn_.Below(20);
        const ColorSeparationType separation = Separation();
        const bool wrap = drawn_.Coin();
        std::vector<unsigned char> room(4096);
        std::vector<unsigned long> offsets(64);
        unsigned int rows = 0;
        if (picture != nullptr && IsSmall(*picture))
            Announced(kBandFailures, [&] {
                picture->GetPictureRows(room.data(), first, last, rows,
                                        wrap ? nullptr : offsets.data(), separation, room.size(),
                                        wrap);
            });
    }
    void RowObjects()
    {
        auto* const picture = Slot<PictureFileInterface>();
        const unsigned int first = Row(), last = Row();
        const bool wrap = drawn_.Coin();
        if (picture != nullptr)
            Announced(kBandFailures, [&] {
                const std::unique_ptr<PictureRowsData> range(
                    picture->GetPictureRows(Cyan, first, last, wrap));
                const std::unique_ptr<PictureRowsData> one(
                    picture->GetPictureRow(Cyan, first, 1, 1));
            });
    }
    /// From another object, itself or none.
    void Store()
    {
        auto* const picture = Slot<PictureFileInterface>();
        const auto* const other = Slot<PictureFileInterface>();
        if (picture == nullptr)
            return;
        const PictureParameters* const none = nullptr;
        picture->StorePictureParams(none);
        picture->StorePictureParams(other);
    }
    void Sizes()
    {
        auto* const picture = Slot<PictureFileInterface>();
        const unsigned int first = Row(), last = Row();
        if (picture != nullptr)
            Announced(kRangeFailures, [&] { picture->GetBufferSize(first, last, false); });
    }
    void Tell()
    {
        const auto* const object = Slot<BasePictureIF>();
        const unsigned int number = Row();
        if (object == nullptr)
            return;
        object->FileSeparation(number);
        BasePictureIF::AvailableSeps(number);
        object->SeparationExists(Separation());
        object->FileResolution();
        object->FileType();
        object->PictureFileName();
        tympan::TiffDetailsOf(*object);
        tympan::SizeInInchesOf(*object);
        Announced(kFileFailures, [&] { tympan::IndexOf(*object); });
    }
    void AskCt()
    {
        auto* const ct = Slot<CtFileInterface>();
        const ColorSeparationType separation = Separation();
        const unsigned int first = Row(), last = Row();
        const int depth = drawn_.Coin() ? 8 : 24;
        if (ct == nullptr || !IsSmall(*ct))
            return;
        CDC* const nothing = nullptr;
        ct->Display(first, last, nothing);
        ct->ApplyPaletteChanges(nullptr, separation, depth);
        Announced(kFileFailures, [&] { ct->ExtractCMYKPixelInfo(first, last); });
        ct->FreePreview(
            ct->Display(HDC{}, HBITMAP{}, separation, first, last, depth, nullptr, false));
    }
    void AskLw()
    {
        auto* const lw = Slot<LWFileInterface>();
        const unsigned int first = Row(), last = Row(), copies = drawn_.Below(3);
        const ColorSeparationType separation = Separation();
        if (lw == nullptr)
            return;
        Announced(kColourFailures, [&] { lw->GetColorValue(static_cast<int>(first), separation); });
        lw->GetLWBufferSize(first, last, copies, 5, true);
        Announced(kFileFailures, [&] { lw->FileValidityCheck(); });
    }
    void Crop()
    {
        auto* const lw = Slot<LWFileInterface>();
        CompressParameters crop{ 1.0 * drawn_.Below(4), 1.0 * drawn_.Below(6), 0, 0 };
        CompressParameters* const wanted = drawn_.Below(4) == 0 ? nullptr : &crop;
        if (lw != nullptr)
            Announced(kFileFailures, [&] {
                CFile target("cropped", CFile::modeCreate | CFile::modeWrite);
                lw->CreateCropedLWFile(lw->FileHandle(), target, wanted);
            });
    }
    void AskAll()
    {
        auto* const whole = Slot<VelmarLWFileInterface>();
        const bool isToBeRead = drawn_.Coin();
        if (whole == nullptr)
            return;
        whole->GetLWBufferSize();
        whole->BuildLwOffsetBuffer();
        const std::unique_ptr<unsigned char[]> table(
            whole->GetSeparationLut(Separation(), true, nullptr));
        CString name = "picture.lw";
        bool isValid = false;
        Announced(kFileFailures, [&] { whole->CreateLwBinFile(name, isToBeRead, isValid); });
    }
    void Jpeg()
    {
        auto* const jpeg = Slot<JpegFileInterface>();
        const unsigned int first = Row(), last = Row();
        if (jpeg == nullptr)
            return;
        unsigned char* table = nullptr;
        unsigned short length = 0;
        unsigned long start = 0, end = 0;
        jpeg->RetrieveHuffmanTable(table, length);
        const std::unique_ptr<unsigned char[]> huffman(table);
        jpeg->RetrieveQuantizationTable(table);
        const std::unique_ptr<unsigned char[]> quantization(table);
        jpeg->GetCompressedBlocksOffsetInfo(first, last, start, end);
        jpeg->StoreCompressedLinesBlock({ first, last });
    }
    void Page()
    {
        const auto* const page = Slot<PageFileInterface>();
        if (page == nullptr)
            return;
        if (const auto* const entry = page->GetEntry(static_cast<unsigned short>(Row())))
            tympan::PlacementOf(*entry);
    }
    void Files()
    {
        const char* const path = Path();
        if (drawn_.Below(4) == 0)
            files_.Recover();
        tympan::fuzz::CheckedFile(path);
        Announced(kFileFailures, [&] { tympan::OpenAnyPicture(path); });
    }

    Drawn& drawn_;
    tympan::test::FaultyFileSystem& files_;
    std::array<Object, 3> objects_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Drawn drawn(data, size);
    tympan::test::MemoryFileSystem memory;
    PutSamples(memory);
    Spoil(memory, drawn);
    tympan::test::FaultyFileSystem files(memory, DrawnPlan(drawn));
    const tympan::ScopedFileSystem scoped(files);
    Script(drawn, files).Play();
    Require(memory.OpenCount() == 0, "all files are closed");
    files.Recover();
    PutSamples(memory);
    Require(CtFileInterface("picture.ct", true).ObjectStatus(), "a fresh object does its work");
    return 0;
}
