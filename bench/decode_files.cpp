// tympan_decode_files FILE...: decodes JPEG and TIFF files with libjpeg-turbo and libtiff, and does
// nothing with the rows. What scripts/bench-check holds the check of such files against.

// jpeglib.h needs the two in front of it.
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
// clang-format on
#include <tiffio.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

bool DecodeJpeg(const char* path)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "rb"));
    if (file == nullptr)
        return false;
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors); // which ends the program at a file that is none
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg_start_decompress(&jpeg);
    std::vector<JSAMPLE> row(std::size_t{ jpeg.output_width } *
                             static_cast<std::size_t>(jpeg.output_components));
    JSAMPROW rows[] = { row.data() };
    while (jpeg.output_scanline < jpeg.output_height)
        jpeg_read_scanlines(&jpeg, rows, 1);
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    return true;
}

bool DecodeTiff(const char* path)
{
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(path, "r"));
    if (tiff == nullptr)
        return false;
    std::vector<std::uint8_t> strip(static_cast<std::size_t>(TIFFStripSize(tiff.get())));
    for (std::uint32_t number = 0; number < TIFFNumberOfStrips(tiff.get()); ++number)
        if (TIFFReadEncodedStrip(tiff.get(), number, strip.data(), -1) < 0)
            return false;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const bool isTiff = std::string_view(argv[i]).ends_with(".tif");
        if (isTiff ? !DecodeTiff(argv[i]) : !DecodeJpeg(argv[i]))
            return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
