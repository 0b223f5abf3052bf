#include "fuzz/tiff_it_files.h"

#include "support/tiff_it_samples.h"

namespace tympan::fuzz {

std::vector<unsigned char> ContinuousToneFile()
{
    test::TiffItSample sample = test::CtSample(4, 3);
    sample.data.assign(48, 99);
    return sample.Bytes();
}

std::vector<unsigned char> LineWorkFile()
{
    test::TiffItSample sample = test::LwSample(4, 1, 2);
    sample.data = { 0, 1, 0, 2 };
    return sample.Bytes();
}

} // namespace tympan::fuzz
