// What a line-work file answers, worked out in the plainest way: two bytes at a time, each step as
// the format's rules have it. It shares no code with the readers that are held against it.
#pragma once

#include "lw/lw_file.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tympan::test {

/// The arguments of all operations; each takes its own.
struct LwCall {
    unsigned int first = 0, last = 0; // the row, or the rows
    ColorSeparationType separation = Cyan;
    bool flag = false;                // the length first; for the buffer size, with the completion
    double across = 1.0, along = 1.0; // the resolutions asked for, by those of the file
    LwRowPadding padding{ 0, 0, 1 };
    unsigned long baseOffset = 0, whiteGap = 0;
    unsigned int copies = 1;
    unsigned char white = 255;
    CompressParameters crop{ 0, 0, 0, 0 };
};

/// All that can be seen of a call. A field that an operation doesn't have stays as it is here.
struct LwAnswer {
    unsigned long result = 0;
    unsigned long code = 0; // 0: none was left
    std::string text;       // empty: none was left
    std::uint64_t position = 0;
    bool isInsideRow = false; // stopped behind the index of a run without a colour
    std::uint64_t moved =
        0;                 // how far a pointer into the buffer went, or the position in a new file
    unsigned int rows = 0; // the number told, or how far a pointer into the offsets went
    std::vector<unsigned long> offsets;
    std::vector<unsigned char>
        bytes; // a caller's buffer with what lies behind, a new file, a canvas
};

inline constexpr unsigned char kUnstored = 0xA5; // fills buffers beforehand
inline constexpr unsigned long kNoOffset = 0xDEADDEAD;
inline constexpr unsigned int kCanvasWidth = 48, kCanvasHeight = 10;

/// Which object is asked. That of the whole file streams colour indexes, always from the file's
/// first row on, and keeps the size of the stream.
enum class LwObject { ofRows, ofWholeFile };

class LwReference {
  public:
    using Bytes = std::vector<unsigned char>;

    /// The record is that of the file, loaded.
    LwReference(Bytes file, const LwPictureParameters& record, LwObject object = LwObject::ofRows);

    /// From now on the file is another one; the places of rows stay.
    void Change(Bytes file) { file_ = std::move(file); }
    /// Nothing tells where the file stands: it is here.
    void StandAt(std::uint64_t position) { position_ = position; }
    /// The stream size that is kept.
    std::uint64_t FileSize() const { return fileSize_; }

    static bool IsTypeOf(const Bytes& file);
    static Bytes Gap(const LwCall& call);
    Bytes Completion(const LwCall& call, unsigned long runs) const;

    LwAnswer Open(const LwCall& call);
    LwAnswer Row(const LwCall& call);
    LwAnswer Rows(const LwCall& call);
    LwAnswer Original(const LwCall& call);
    LwAnswer Plain(const LwCall& call);
    LwAnswer Placing(const LwCall& call);
    LwAnswer Size(const LwCall& call);
    LwAnswer Crop(const LwCall& call);
    LwAnswer Display(const LwCall& call);
    // Of the whole file alone: its check, its attempt at the rows' places, the size of all rows.
    LwAnswer Check(const LwCall& call);
    LwAnswer Build(const LwCall& call);
    LwAnswer WholeSize(const LwCall& call);

  private:
    struct Pair {
        unsigned char first, second;
    };

    template <typename Work>
    LwAnswer Answered(unsigned long otherCode, const char* otherText, Work work);
    template <typename Work>
    void ForRows(std::uint64_t first, std::uint64_t end, Work work);
    template <typename Work>
    void ForStreamRows(const LwCall& call, Work work);
    template <typename Use>
    std::uint64_t Walk(Use use);
    std::uint64_t Start() const { return 2048 + 18 * inks_.size(); }
    void Prove(LwAnswer& answer);
    LwAnswer ClosedUnlessSound(LwAnswer answer) const;
    LwAnswer Counted(const LwCall& call);
    Pair Read();
    void CheckDelimiter();
    void CheckIntegrity(std::uint64_t pixels) const;
    unsigned char Ink(Pair run, ColorSeparationType separation) const;
    std::uint64_t Completed(const LwCall& call) const;
    void CutRow(std::uint64_t start, std::uint64_t end, unsigned int left, unsigned int right,
                Bytes& out) const;

    Bytes file_;
    double width_, height_;
    std::array<double, 2> inches_, resolutions_; // high and wide
    std::array<bool, 4> present_{};
    std::vector<std::array<unsigned char, 4>> inks_;
    std::vector<std::uint64_t> places_;
    std::uint64_t position_ = 0;
    bool isWhole_;
    std::uint64_t fileSize_ = 0;
};

} // namespace tympan::test
