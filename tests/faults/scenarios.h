// The scenarios: for each format small files, and the work of a client on them.
#pragma once

#include "faults/run.h"

#include <string>
#include <string_view>
#include <vector>

namespace tympan::test {

/// A stretch of a file that is changed as what it is.
enum class FieldKind { text, byte, little16, little32, run, path };

struct Field {
    std::size_t file = 0; ///< of the scenario's
    std::size_t at = 0;
    std::size_t width = 0;
    FieldKind kind = FieldKind::text;
};

using NamedBytes = std::pair<std::string, Bytes>;

struct Scenario {
    std::string name;
    std::vector<NamedBytes> files;
    void (*play)(Run&) = nullptr;
    std::vector<Field> fields{};
    /// Of each file, how many of its first bytes are changed in turn; all where none is told.
    std::vector<std::size_t> changedBytes{};
    /// Of each file, from which length on a cut one has what says where all else stands: a step then
    /// gives what it gives of the whole file, or tells. None told: no such length.
    std::vector<std::size_t> heads{};
    /// The steps that don't, each with the words of its header that allow it.
    std::vector<std::string_view> gentle{};
};

/// The scenarios of each format, in the order in which a fault in one would explain the next.
std::vector<Scenario> CtScenarios();
std::vector<Scenario> LwScenarios();
std::vector<Scenario> LwWholeScenarios();
std::vector<Scenario> JpegScenarios();
std::vector<Scenario> PageScenarios();
std::vector<Scenario> TiffScenarios();
std::vector<Scenario> TiffItScenarios();

Bytes AsBytes(const std::vector<unsigned char>& bytes);

/// The fields of a TIFF's first directory, low bytes first.
std::vector<Field> DirectoryFields(const Bytes& file);

/// The fields of the header that all formats but JPEG and TIFF share.
std::vector<Field> CommonHeaderFields();

// Steps that scenarios share.

/// What the object and its record tell of the picture.
void AskGeometry(Run& run, BasePictureIF& picture);
/// Asks whichever format takes the path for an object, and opens it.
void AskFactory(Run& run, const char* path);
/// The findings of the check.
void AskCheck(Run& run, const char* path);
/// Closes the picture, and opens it again.
void Reopen(Run& run, BasePictureIF& picture, const char* path, const May& may);
/// The pixels of a claim that a test makes room for.
bool IsSmall(double width, double height);

/// How an object's opening, a later one of its own, and its `Display` may fail.
struct MayReading {
    May opens, reopens, shows;
};

inline void Show(BasePictureIF& picture, CDC& dc)
{
    picture.Display(0, 2, dc);
}

/// Makes an object, or takes it away; steps.
template <typename Picture, typename Make>
void MakeOne(Run& run, const May& may, std::unique_ptr<Picture>& picture, Make make)
{
    run.Do("opened", may, [&] {
        picture.reset(make());
        run.Subject(picture.get());
        return picture != nullptr && picture->ObjectStatus();
    });
}
template <typename Picture>
void DestroyOne(Run& run, std::unique_ptr<Picture>& picture)
{
    run.Subject(nullptr);
    run.Do("destroyed", {}, [&] { return picture.reset(), 1; });
}

/// Plays what every reading scenario is: makes an object, shows it and destroys it; makes another and
/// asks it; then, with nothing failing any more, the same object again, or a new one where there was
/// none. What is to be asked without the object stands ahead, since memory is bounded for each
/// object.
template <typename Picture, typename Make, typename Ask, typename ShowOne = decltype(&Show)>
void PlayReading(Run& run, const char* path, const MayReading& may, Make make, Ask ask,
                 ShowOne show = Show)
{
    std::unique_ptr<Picture> picture;
    MakeOne(run, may.opens, picture, make);
    if (picture != nullptr && !run.Told())
        run.Draw("shown", may.shows, [&](CDC& dc) { show(*picture, dc); });
    DestroyOne(run, picture);
    MakeOne(run, may.opens, picture, make);
    if (picture != nullptr) {
        ask(*picture);
        Reopen(run, *picture, path, may.reopens);
        if (run.Told())
            ask(*picture);
    }
    run.Recover();
    if (picture == nullptr)
        MakeOne(run, may.opens, picture, make);
    Reopen(run, *picture, path, may.reopens);
    ask(*picture);
    DestroyOne(run, picture);
}

/// Plays what every writing scenario is, once under the fault and once behind it: makes an object,
/// lets `write` fill it, closes and destroys it, and looks at the file, and at its side file where it
/// has one, which is written at the end.
template <typename Picture, typename Make, typename Write>
void PlayWriting(Run& run, const char* path, const char* sidePath, const May& opens, Make make,
                 Write write)
{
    const auto writeOne = [&] {
        std::unique_ptr<Picture> picture;
        MakeOne(run, opens, picture, make);
        if (picture == nullptr)
            return;
        write(*picture);
        run.Do("closed", { kFile }, [&] { return picture->ClosePictureFile(), 1; });
        run.LookAt("the new file", path);
        DestroyOne(run, picture);
        if (sidePath != nullptr)
            run.LookAtWholeOrEmpty("the new side file", sidePath);
    };
    writeOne();
    run.Recover();
    writeOne();
}

} // namespace tympan::test
