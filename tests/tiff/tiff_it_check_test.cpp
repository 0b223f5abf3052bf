// The check of TIFF/IT files: a fault of the structure or the runs, and what is told of it.
#include "core/findings.h"
#include "platform/file.h"
#include "support/checking.h"
#include "tiff/tiff_check.h"
#include "tiff_it_files.h"
#include "tympan/inspect.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using namespace tympan::test;

std::vector<std::string> FindingsIn(const std::vector<unsigned char>& bytes)
{
    const OneFile files(bytes);
    CFile file("pic", CFile::modeRead);
    std::vector<std::string> told;
    const tympan::FindingVisitor visit = [&](const tympan::Finding& finding) {
        EXPECT_TRUE(finding.found.ends_with('.')) << finding.found;
        told.push_back(ShortForm(finding));
    };
    const tympan::CheckProgress progress;
    tympan::Findings findings(visit, progress);
    tympan::TiffItFileCheck().prove(file, findings);
    return told;
}

TiffItSample SoundCt()
{
    TiffItSample sample = CtSample(3, 2);
    sample.data.resize(24);
    return sample;
}

// Two rows of three pixels in two colours.
TiffItSample SoundLw()
{
    TiffItSample sample = LwSample(3, 2, 2);
    sample.data = { 0, 0, 0, 1, 1, 2, 0, 0, 0, 0, 1, 0, 0, 3, 0, 0, 0, 0 };
    return sample;
}

struct SampleCase {
    const char* name;
    TiffItSample sample;
    std::vector<std::string> findings;
};

template <typename Change>
TiffItSample Changed(TiffItSample sample, Change change)
{
    change(sample, sample.directories[0]);
    return sample;
}

TEST(TiffItCheck, TellsEachFault)
{
    const SampleCase kCases[] = {
        { "sound tone", SoundCt(), {} },
        { "sound work", SoundLw(), {} },
        { "version",
          Changed(SoundCt(), [](auto& s, auto&) { s.version = 43; }),
          { "TIFFIT-0001" } },
        { "values outside",
          Changed(SoundCt(),
                  [](auto&, auto& f) {
                      f[2].count = 9000;
                      f[2].tag = 9;
                  }),
          { "TIFFIT-0002" } },
        { "type", Changed(SoundCt(), [](auto&, auto& f) { f[5].type = 9; }), { "TIFFIT-0003" } },
        { "kind", Changed(SoundCt(), [](auto&, auto& f) { f[2].count = 3; }), { "TIFFIT-0005" } },
        { "size",
          Changed(SoundCt(), [](auto&, auto& f) { f[0].values = { 0 }; }),
          { "TIFFIT-0006" } },
        { "rows",
          Changed(SoundCt(), [](auto&, auto& f) { f[4].values = { 1 }; }),
          { "TIFFIT-0007" } },
        { "two strips",
          Changed(SoundCt(),
                  [](auto&, auto& f) {
                      f[3].values = { 4096, 4096 };
                  }),
          { "TIFFIT-0008 byte 4096" } },
        { "cut tone",
          Changed(SoundCt(), [](auto& s, auto&) { s.data.pop_back(); }),
          { "TIFFIT-0009 byte 4096" } },
        { "compressed",
          Changed(SoundCt(),
                  [](auto&, auto& f) {
                      f.push_back({ 259, 3, { 5 } });
                  }),
          { "TIFFIT-0010" } },
        { "16 bits",
          Changed(SoundCt(),
                  [](auto&, auto& f) {
                      f[2].values = { 16, 16, 16, 16 };
                  }),
          { "TIFFIT-0017" } },
        { "red, green, blue, planes",
          Changed(SoundCt(),
                  [](auto&, auto& f) {
                      f.push_back({ 262, 3, { 2 } });
                      f.push_back({ 284, 3, { 2 } });
                  }),
          { "TIFFIT-0017", "TIFFIT-0017" } },
        { "uncompressed in the end",
          Changed(SoundCt(),
                  [](auto& s, auto& f) {
                      f.push_back({ 259, 3, { 5 } });
                      s.directories.push_back({ { 259, 3, { 1 } } });
                  }),
          {} },
        { "no colours",
          Changed(SoundLw(), [](auto&, auto& f) { f.pop_back(); }),
          { "TIFFIT-0011" } },
        { "part of a colour",
          Changed(SoundLw(), [](auto&, auto& f) { f.back().values.push_back(1); }),
          { "TIFFIT-0012 byte 2048" } },
        { "colour",
          Changed(SoundLw(), [](auto& s, auto&) { s.data[4] = 2; }),
          { "TIFFIT-0013 row 0 byte 4100" } },
        { "passing",
          Changed(SoundLw(), [](auto& s, auto&) { s.data[13] = 4; }),
          { "TIFFIT-0014 row 1 byte 4106" } },
        { "no length",
          Changed(SoundLw(),
                  [](auto& s, auto&) {
                      s.data.insert(s.data.begin() + 2, { 1, 0, 0, 0 });
                  }),
          { "TIFFIT-0015 row 0 byte 4098" } },
        { "cut work",
          Changed(SoundLw(), [](auto& s, auto&) { s.data.resize(9); }),
          { "TIFFIT-0016 row 0 byte 4105" } },
    };
    for (const SampleCase& one : kCases) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(FindingsIn(one.sample.Bytes()), one.findings);
    }
    EXPECT_EQ(FindingsIn({ 'I', 'I', 42, 0, 8, 0, 0 }), std::vector<std::string>{ "TIFFIT-0001" });
    EXPECT_EQ(FindingsIn({ 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 8, 0, 0, 0 }),
              std::vector<std::string>{ "TIFFIT-0004" });
}

// Neither another kind of file nor a fault is told when the header can't be read.
TEST(TiffItCheck, AFailingDiskIsNoFaultOfTheFile)
{
    OneFile files(SoundLw().Bytes());
    tympan::CheckOptions options;
    options.formats = { tympan::kTiffItName, "CT" };
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE(number);
        files.Watched().Fail(FileOperation::readAt, number, EIO);
        const CheckedBytes checked = CheckPath("pic", options);
        const bool hasFailed = files.Watched().HasFailed();
        files.Watched().FailAny(0, 0);
        if (!hasFailed)
            break;
        ASSERT_EQ(checked.findings.size(), 1U);
        EXPECT_EQ(checked.findings[0].substr(0, 9), "FILE-0001");
    }
}

} // namespace
