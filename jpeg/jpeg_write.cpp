// What a writing client tells of its picture: the stream itself it writes through the file.
#include "jpeg/jpeg_file.h"

void JpegFileInterface::StoreCompressedLinesBlock(const CompressedLine& line)
{
    compressedBlocksInfo_.StoreBlock(line);
}

void JpegFileInterface::StorePictureParams(double xScanResolution, double scanResolution,
                                           double sizeUnitsFactor, double heightInUnits,
                                           double widthInUnits, double heightInPixels,
                                           double widthInPixels)
{
    PictureParameters record;
    record.Resolution({ xScanResolution, scanResolution });
    record.FileSizeUnitsFactor(sizeUnitsFactor);
    record.HeightInUnits(heightInUnits);
    record.WidthInUnits(widthInUnits);
    record.HeightInPixels(heightInPixels);
    record.WidthInPixels(widthInPixels);
    StorePictureParams(&record);
    compressedBlocksInfo_.StoreParams(record);
}

void JpegFileInterface::StorePictureParams(const PictureFileInterface* const other)
{
    PictureFileInterface::StorePictureParams(other);
    if (other != nullptr && other->PictureParams() != nullptr)
        compressedBlocksInfo_.StoreParams(*other->PictureParams());
}
