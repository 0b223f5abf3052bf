// The TIFF library over libtiff: decoding is libtiff's; the order of the rows, their layout and the
// bounds of memory are kept in the sources beside this one.
#include "platform/tiff_library.h"

#include "platform/file_system.h"
#include "platform/tiff_decoder.h"
#include "platform/tiff_layout.h"
#include "platform/tiff_messages.h"
#include "platform/tiff_source.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tympan {

namespace {

std::string SystemText(int error)
{
    return std::generic_category().message(error);
}

// An open file: the record with what the library keeps beside it.
class OpenTiff final : public tiff {
  public:
    explicit OpenTiff(const char* name) : source_(name) {}

    // Reads the directory of a file, which is closed in the end if it is the library's.
    bool Open(int number, TiffOwner owner)
    {
        source_.file.Attach(number, owner);
        if (!source_.Open())
            return FailOpening();
        FillRecord(*this, source_.Get());
        layout_ = ReadLayout(source_.Get(), *this);
        refusal_ = WhyRefused(source_.Get(), layout_, source_.file.Length());
        if (!refusal_)
            decoder_.emplace(source_, layout_);
        // libtiff goes on without a field that it couldn't read.
        return !source_.file.HasFailed() || FailOpening();
    }

    std::uint64_t RowBytes() const { return layout_.RowBytes(); }

    bool GivesRows()
    {
        source_.report.Begin();
        return refusal_ == nullptr || Fail(refusal_);
    }

    TiffInfo Info() const
    {
        TIFF* const open = source_.Get();
        // Null: it failed while rows were read, and could not be opened again.
        return open ? InfoOf(open, *this) : TiffInfo{};
    }

    bool ReadRow(void* buffer, std::uint32_t row)
    {
        source_.report.Begin();
        if (refusal_)
            return Fail(refusal_);
        if (row >= ImageLength)
            return Fail("there is no row " + std::to_string(row) + ", the file has " +
                        std::to_string(ImageLength));
        if (!band_.Holds(row))
            FillBand(row);
        if (!band_.HasDecoded(row)) {
            LastTiffMessage() = band_.failure;
            return false;
        }
        const auto bytes = band_.Row(row);
        std::memcpy(buffer, bytes.data(), bytes.size());
        return true;
    }

    // Keeps the reason, and gives false.
    bool Fail(std::string_view text) noexcept
    {
        source_.report.Fail(text);
        return false;
    }
    bool FailBySystem(int error)
    {
        source_.report.Fail(SystemText(error), error);
        return false;
    }

  private:
    bool FailOpening()
    {
        const int error = source_.file.TakeError();
        if (error != 0)
            return FailBySystem(error);
        return source_.report.HasFailed() ? false : Fail("it is no TIFF file");
    }

    void FillBand(std::uint32_t row)
    {
        source_.file.TakeError();
        decoder_->Fill(band_, row);
        if (band_.decoded != band_.count)
            KeepFailure(source_.file.TakeError());
    }

    // The failure stays with the band, since every row behind it would decode again all that is
    // before; but what the system could not read now it may read the next time.
    void KeepFailure(int error)
    {
        if (error != 0)
            FailBySystem(error);
        else if (!source_.report.HasFailed())
            source_.report.Fail("row " + std::to_string(band_.first + band_.decoded) +
                                " can't be decoded");
        band_.failure = LastTiffMessage();
        if (error != 0)
            band_.count = band_.decoded;
    }

    TiffSource source_;
    TiffLayout layout_;
    const char* refusal_ = nullptr; // why no row can be read
    std::optional<TiffDecoder> decoder_;
    TiffBand band_;
};

OpenTiff& Opened(tiff* file)
{
    return *static_cast<OpenTiff*>(file);
}

// Opens what `open` gives, a result of the seam; null on failure, with the reason kept.
template <typename OpenNumber>
tiff* OpenNumbered(const char* name, const char* mode, TiffOwner owner, OpenNumber openNumber)
{
    const char* const named = name ? name : "";
    try {
        auto opened = std::make_unique<OpenTiff>(named);
        if (!mode || std::string_view(mode) != "r")
            return opened->Fail("TIFF files are only read"), nullptr;
        const IoResult number = openNumber(named);
        if (!number)
            return opened->FailBySystem(number.error), nullptr;
        return opened->Open(static_cast<int>(number.value), owner) ? opened.release() : nullptr;
    } catch (const std::exception& failure) {
        KeepTiffMessage([&] { return std::string(named) + ": " + failure.what(); });
        return nullptr;
    }
}

IoResult OpenPath(const char* path)
{
    const std::optional<CString> resolved = ResolvePath(path);
    return resolved ? CurrentFileSystem().Open(*resolved, OpenMode{}) : IoResult::Failed(ENOENT);
}

} // namespace

} // namespace tympan

tiff* TiffOpen(const char* name, const char* mode)
{
    return tympan::OpenNumbered(name, mode, tympan::TiffOwner::library, tympan::OpenPath);
}

tiff* TifffdOpen(int handle, const char* name, const char* mode)
{
    return tympan::OpenNumbered(name, mode, tympan::TiffOwner::caller, [=](const char*) {
        return tympan::IoResult{ handle, 0 };
    });
}

void TiffClose(tiff* file)
{
    if (file)
        delete &tympan::Opened(file);
}

int TiffReadScanline(tiff* file, void* buffer, unsigned int row, unsigned short)
{
    if (!file || !buffer)
        return -1;
    tympan::OpenTiff& opened = tympan::Opened(file);
    try {
        return opened.ReadRow(buffer, row) ? 1 : -1;
    } catch (const std::exception& failure) {
        opened.Fail(failure.what());
        return -1;
    }
}

std::int64_t TiffScanlineSize(tiff* file)
{
    return file ? static_cast<std::int64_t>(tympan::Opened(file).RowBytes()) : 0;
}

bool TiffGivesRows(tiff* file)
{
    return file && tympan::Opened(file).GivesRows();
}

TiffInfo TiffInfoOf(tiff* file)
{
    return file ? tympan::Opened(file).Info() : TiffInfo{};
}
