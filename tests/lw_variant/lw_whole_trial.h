// A line-work file that is opened as a whole, beside the opening by rows, and the same questions
// put to the library and to the reference.
#pragma once

#include "lw/lw_trial.h"
#include "lw_variant/velmar_lw_file.h"

#include <memory>
#include <stdexcept>
#include <vector>

namespace tympan::test {

/// The whole-file object's hooks in the open.
class LwWholeHooks : public VelmarLWFileInterface {
  public:
    using VelmarLWFileInterface::CanAddMarkers;
    using VelmarLWFileInterface::CompleteLineTo4096;
    using VelmarLWFileInterface::PictureParams;
};

/// \throws std::runtime_error where no object is given.
inline std::unique_ptr<VelmarLWFileInterface> OpenedWhole(const char* path, bool inputFile = true)
{
    std::unique_ptr<VelmarLWFileInterface> picture(create_velmar_lw_file_object(path, inputFile));
    if (picture == nullptr)
        throw std::runtime_error("no picture");
    return picture;
}

inline bool IsFileOpen(BasePictureIF& picture)
{
    return picture.FileHandle().m_hFile != CFile::hFileNull;
}

class LwWholeAsked : public LwAsked {
  public:
    LwWholeAsked(VelmarLWFileInterface& picture, const MemoryFileSystem& files)
        : LwAsked(picture, files), picture_(picture)
    {}

    LwAnswer Check(const LwCall&)
    {
        return Answered([&](LwAnswer& answer) {
            const bool isSound = picture_.FileValidityCheck();
            if (isSound)
                TakePlaces(answer);
            return isSound;
        });
    }
    LwAnswer Build(const LwCall&)
    {
        return Answered([&](LwAnswer& answer) {
            const unsigned long result = picture_.BuildLwOffsetBuffer();
            TakePlaces(answer);
            return result;
        });
    }
    LwAnswer WholeSize(const LwCall&)
    {
        return Answered([&](LwAnswer&) { return picture_.GetLWBufferSize(); });
    }

  private:
    VelmarLWFileInterface& picture_;
};

using ByAnyLw = LwAnswer (LwAsked::*)(const LwCall&);
inline const LwOperation kCheck{ "check", &LwReference::Check,
                                 static_cast<ByAnyLw>(&LwWholeAsked::Check) };
inline const LwOperation kBuild{ "places", &LwReference::Build,
                                 static_cast<ByAnyLw>(&LwWholeAsked::Build) };
inline const LwOperation kWholeSize{ "whole size", &LwReference::WholeSize,
                                     static_cast<ByAnyLw>(&LwWholeAsked::WholeSize) };

/// The base's trial, and the whole-file object on the same file.
class LwWholeTrial : public LwTrial {
  public:
    explicit LwWholeTrial(const Bytes& bytes)
        : LwTrial(bytes), reference_(bytes, Record(), LwObject::ofWholeFile),
          whole_(OpenedWhole(kPath)), asked_(*whole_, Memory())
    {}
    explicit LwWholeTrial(const LwPicture& picture) : LwWholeTrial(picture.Bytes()) {}

    VelmarLWFileInterface& Whole() { return *whole_; }
    MemoryFileSystem& Memory() { return LwTrial::Memory(); }

    void Change(const Bytes& bytes)
    {
        LwTrial::Change(bytes);
        reference_.Change(bytes);
    }
    LwAnswer Same(const LwOperation& operation, const LwCall& call = {})
    {
        LwAnswer wanted = AskBoth(reference_, asked_, operation, call);
        EXPECT_EQ(whole_->GetLwPictureParams()->LwFileSize(), reference_.FileSize());
        return wanted;
    }
    LwAnswer Given(const LwOperation& operation, const LwCall& call = {})
    {
        asked_.Expect((reference_.*operation.byTheRules)(call));
        return (asked_.*operation.byTheLibrary)(call);
    }

  private:
    LwReference reference_;
    std::unique_ptr<VelmarLWFileInterface> whole_;
    LwWholeAsked asked_;
};

} // namespace tympan::test
