// A line-work file in memory, and the same questions put to the library and to the reference.
#pragma once

#include "lw/lw_reference.h"
#include "platform/memory_files.h"
#include "support/canvas.h"
#include "support/lw_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace tympan::test {

inline constexpr char kNoError[] = "BasePictureIF:\n No Error !";
inline constexpr char kOpeningFailed[] = "LWInterface:\n Error Opening LineWork file, aborting!";

/// An LW object with what it keeps for derived classes in the open.
class OpenLw : public LWFileInterface {
  public:
    OpenLw() = default;
    explicit OpenLw(const char* path, bool inputFile = true)
    {
        OpenPictureFile(path, inputFile, false, nullptr);
    }
    using LWFileInterface::AddWhiteColsGap;
    using LWFileInterface::CalcTableTransparentColor;
    using LWFileInterface::CheckRowDelimiters;
    using LWFileInterface::CheckRowIntegrity;
    using LWFileInterface::CompleteLineTo4096;
    using LWFileInterface::CopyRowDelimiters;
    using LWFileInterface::ErrorMsg;
    using LWFileInterface::isTypeOf;
    using LWFileInterface::LwDataStartPosition;
    using LWFileInterface::LwFileArray;

    // The same of any LW object.
    static unsigned long long* PlacesOf(const LWFileInterface& picture)
    {
        return (picture.*static_cast<unsigned long long* (LWFileInterface::*)() const>(
                             &OpenLw::LwFileArray))();
    }
    static void Text(LWFileInterface& picture, const char* text)
    {
        (picture.*static_cast<void (BasePictureIF::*)(const CString&)>(&OpenLw::ErrorMsg))(text);
    }
};

inline std::vector<unsigned char> UnsignedBytes(const Bytes& contents)
{
    std::vector<unsigned char> bytes(contents.size());
    std::transform(contents.begin(), contents.end(), bytes.begin(),
                   [](std::byte byte) { return static_cast<unsigned char>(byte); });
    return bytes;
}

/// Puts calls to an object, with as much room as the answer that is expected has.
class LwAsked {
  public:
    LwAsked(LWFileInterface& picture, const MemoryFileSystem& files)
        : picture_(picture), files_(files)
    {}

    void Expect(const LwAnswer& answer) { expected_ = answer; }

    LwAnswer Open(const LwCall&)
    {
        return Answered([&](LwAnswer& answer) {
            const bool isSound = picture_.FileValidityCheck();
            if (isSound)
                TakePlaces(answer);
            return isSound;
        });
    }
    LwAnswer Row(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            return picture_.GetPictureRow(answer.bytes.data(), call.first, call.separation,
                                          call.across * picture_.ResolutionOnScanAxis(),
                                          call.along * picture_.ResolutionOnXScanAxis(), 0);
        });
    }
    LwAnswer Rows(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            return picture_.GetPictureRows(answer.bytes.data(), call.first, call.last, answer.rows,
                                           answer.offsets.data(), call.separation, 0, false);
        });
    }
    LwAnswer Original(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            return picture_.GetOriginalPictureRow(answer.bytes.data(), call.first, call.flag);
        });
    }
    LwAnswer Plain(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            return picture_.GetLWPictureRows(answer.bytes.data(), call.first, call.last,
                                             answer.offsets.data(), call.separation, call.padding,
                                             7, call.flag);
        });
    }
    LwAnswer Placing(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            unsigned char* bytes = answer.bytes.data();
            unsigned long* offsets = answer.offsets.data();
            const unsigned long result = picture_.GetLWPictureRows(
                bytes, call.first, call.last, offsets, call.baseOffset, call.separation,
                call.whiteGap, call.copies, call.white, 7, !call.flag);
            answer.moved = static_cast<std::uint64_t>(bytes - answer.bytes.data());
            answer.rows = static_cast<unsigned int>(offsets - answer.offsets.data());
            return result;
        });
    }
    LwAnswer Size(const LwCall& call)
    {
        return Answered([&](LwAnswer&) {
            return picture_.GetLWBufferSize(call.first, call.last, call.copies, call.whiteGap,
                                            call.flag);
        });
    }
    LwAnswer Crop(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            CFile target("crop.lw", CFile::modeCreate | CFile::modeWrite);
            CompressParameters crop = call.crop;
            picture_.CreateCropedLWFile(picture_.FileHandle(), target, &crop);
            answer.moved = target.GetPosition();
            answer.bytes = UnsignedBytes(files_.Contents("crop.lw"));
            return 0;
        });
    }
    LwAnswer Display(const LwCall& call)
    {
        return Answered([&](LwAnswer& answer) {
            Canvas canvas(kCanvasWidth, kCanvasHeight);
            picture_.Display(call.first, call.last, canvas.dc);
            for (std::size_t i = 0; i < answer.bytes.size(); ++i) {
                const auto place = static_cast<int>(i / 3), width = int{ kCanvasWidth };
                const COLORREF colour =
                    GetPixel(canvas.dc.GetSafeHdc(), place % width, place / width);
                answer.bytes[i] = static_cast<unsigned char>(colour >> 8 * (i % 3));
            }
            return 0;
        });
    }

  protected:
    void TakePlaces(LwAnswer& answer) const
    {
        if (const unsigned long long* const places = OpenLw::PlacesOf(picture_))
            std::copy_n(places, answer.offsets.size(), answer.offsets.begin());
    }

    template <typename Work>
    LwAnswer Answered(Work work)
    {
        picture_.TraceStatus(0);
        OpenLw::Text(picture_, "");
        LwAnswer answer;
        answer.bytes.assign(expected_.bytes.size(), kUnstored);
        answer.offsets.assign(expected_.offsets.size(), kNoOffset);
        answer.result = static_cast<unsigned long>(work(answer));
        answer.code = picture_.TraceStatus();
        answer.text = picture_.ErrorMsg();
        CFile& file = picture_.FileHandle();
        answer.position = file.m_hFile != CFile::hFileNull ? file.GetPosition() : 0;
        return answer;
    }

  private:
    LWFileInterface& picture_;
    const MemoryFileSystem& files_;
    LwAnswer expected_;
};

/// The operations that both answer.
struct LwOperation {
    const char* name;
    LwAnswer (LwReference::*byTheRules)(const LwCall&);
    LwAnswer (LwAsked::*byTheLibrary)(const LwCall&);
};
inline constexpr LwOperation kOpen{ "opening", &LwReference::Open, &LwAsked::Open };
inline constexpr LwOperation kRow{ "row", &LwReference::Row, &LwAsked::Row };
inline constexpr LwOperation kRows{ "rows", &LwReference::Rows, &LwAsked::Rows };
inline constexpr LwOperation kOriginal{ "original", &LwReference::Original, &LwAsked::Original };
inline constexpr LwOperation kPlain{ "plain stream", &LwReference::Plain, &LwAsked::Plain };
inline constexpr LwOperation kPlacing{ "placing stream", &LwReference::Placing, &LwAsked::Placing };
inline constexpr LwOperation kSize{ "buffer size", &LwReference::Size, &LwAsked::Size };
inline constexpr LwOperation kCrop{ "crop", &LwReference::Crop, &LwAsked::Crop };
inline constexpr LwOperation kDisplay{ "display", &LwReference::Display, &LwAsked::Display };
inline constexpr LwOperation kRowOperations[] = { kRow,     kRows, kOriginal, kPlain,
                                                  kPlacing, kSize, kCrop,     kDisplay };

/// What two answers differ in; empty when they don't.
inline std::string Difference(const LwAnswer& given, const LwAnswer& wanted)
{
    std::string text;
    const auto compare = [&](const char* name, std::uint64_t is, std::uint64_t should) {
        if (is != should)
            text += std::string(name) + ' ' + std::to_string(is) + " for " +
                    std::to_string(should) + "; ";
    };
    const auto places = [&](const char* name, const auto& is, const auto& should) {
        compare(name, is.size(), should.size());
        for (std::size_t i = 0; i < std::min(is.size(), should.size()); ++i)
            if (is[i] != should[i])
                return compare((name + (" at " + std::to_string(i))).c_str(), is[i], should[i]);
    };
    compare("result", given.result, wanted.result);
    compare("code", given.code, wanted.code);
    // A single row stops behind the index of a run without a colour; the library behind the run.
    const bool isAtIndex = wanted.isInsideRow && given.position == wanted.position + 1;
    if (!isAtIndex)
        compare("position", given.position, wanted.position);
    compare("moved", given.moved, wanted.moved);
    compare("rows", given.rows, wanted.rows);
    places("offsets", given.offsets, wanted.offsets);
    places("bytes", given.bytes, wanted.bytes);
    return given.text == wanted.text ? text : text + '"' + given.text + "\" for " + wanted.text;
}

/// Asks both, and gives the answer by the rules.
inline LwAnswer AskBoth(LwReference& reference, LwAsked& asked, const LwOperation& operation,
                        const LwCall& call)
{
    LwAnswer wanted = (reference.*operation.byTheRules)(call);
    asked.Expect(wanted);
    const LwAnswer given = (asked.*operation.byTheLibrary)(call);
    EXPECT_EQ(Difference(given, wanted), "") << operation.name;
    reference.StandAt(given.position);
    return wanted;
}

/// A file that both sides have opened, or refused.
class LwTrial {
  public:
    using Bytes = std::vector<unsigned char>;

    explicit LwTrial(const Bytes& bytes)
        : record_(Loaded(bytes)), reference_(bytes, *record_), picture_(kPath),
          asked_(picture_, memory_)
    {
        CFile file(kPath, CFile::modeRead);
        EXPECT_EQ(OpenLw::isTypeOf(file), LwReference::IsTypeOf(bytes));
        const LwAnswer wanted = loaded_ ? reference_.Open({}) : LwAnswer{};
        LwAnswer given;
        given.result = picture_.ObjectStatus();
        given.code = picture_.TraceStatus();
        if (given.code == 90001)
            given.text = picture_.ErrorMsg();
        if (given.result != 0) {
            given.position = picture_.FileHandle().GetPosition();
            given.offsets.assign(picture_.LwFileArray(),
                                 picture_.LwFileArray() + wanted.offsets.size());
        }
        EXPECT_EQ(Difference(given, wanted), "");
        EXPECT_EQ(picture_.FileHandle().m_hFile != CFile::hFileNull, wanted.result != 0);
    }
    explicit LwTrial(const LwPicture& picture) : LwTrial(picture.Bytes()) {}

    bool IsOpen() const { return picture_.ObjectStatus(); }
    OpenLw& Picture() { return picture_; }
    WatchedFileSystem& Files() { return files_; }

    /// The open file becomes another one.
    void Change(const Bytes& bytes)
    {
        CFile file(kPath, CFile::modeReadWrite);
        file.SetLength(bytes.size());
        file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
        reference_.Change(bytes);
    }

    /// Asks both, and gives the answer by the rules.
    LwAnswer Same(const LwOperation& operation, const LwCall& call = {})
    {
        return AskBoth(reference_, asked_, operation, call);
    }
    /// Asks the library alone, in whose way there is something.
    LwAnswer Given(const LwOperation& operation, const LwCall& call = {})
    {
        asked_.Expect((reference_.*operation.byTheRules)(call));
        return (asked_.*operation.byTheLibrary)(call);
    }

  protected:
    static constexpr char kPath[] = "sample.lw";

    MemoryFileSystem& Memory() { return memory_; }
    const LwPictureParameters& Record() const { return *record_; }

  private:
    std::unique_ptr<LwPictureParameters> Loaded(const Bytes& bytes)
    {
        memory_.Put(kPath, AsText(bytes));
        auto record = std::make_unique<LwPictureParameters>();
        CFile file(kPath, CFile::modeRead);
        loaded_ = record->Load(file);
        return record;
    }

    MemoryFileSystem memory_;
    WatchedFileSystem files_{ memory_ };
    ScopedFileSystem scoped_{ files_ };
    bool loaded_ = false;
    std::unique_ptr<LwPictureParameters> record_;
    LwReference reference_;
    OpenLw picture_;
    LwAsked asked_;
};

} // namespace tympan::test
