// One playing of a scenario under one fault: its steps, what each gave, and what it told.
#pragma once

#include "core/picture_object.h"
#include "faults/allocations.h"
#include "faults/faulty_files.h"
#include "support/canvas.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tympan::test {

/// What a step may throw, by its header; bits.
enum Throwing : unsigned {
    kNothing = 0,
    kFile = 1,     ///< CFileException*
    kMemory = 2,   ///< CMemoryException*, MemoryAllocException*, std::bad_alloc
    kReadFile = 4, ///< ReadFileException*
    kRefusal = 8,  ///< an argument that the file doesn't fit: separations, colours
    kOther = 16,   ///< what no header announces
};

/// How a step may fail, by its header.
struct May {
    unsigned throws = kNothing;
    std::array<unsigned long, 6> leaves{}; ///< the codes; 0 is none
    /// A failure may leave no code, and throw nothing: its result tells alone.
    bool resultTells = false;
};

/// The bits of what `work` throws, which is destroyed.
unsigned ThrownBy(void (*work)(void*), void* context);

/// What a step gave. No memory of its own, so that live allocations can be compared.
struct Step {
    const char* name = "";
    std::uint64_t digest = 0; ///< of all that it gave
    unsigned long code = 0;
    /// A failure: by its code, a throw, a result of 0, or an object that has failed.
    bool tells = false;
    /// A failure without the code or the throw that its header announces.
    bool isMute = false;
};

struct Outcome {
    static constexpr std::size_t kMost = 160;

    std::array<Step, kMost> steps{};
    std::size_t count = 0;
    // The first step that threw or left what its header doesn't announce, and what that was.
    const char* strange = nullptr;
    unsigned thrown = 0;
    unsigned long left = 0;
    const char* overran = nullptr; ///< the first step that wrote behind its room
};

/// Memory for a step to fill, that holds what new memory does, with more behind it that no step may
/// touch.
class Room {
  public:
    explicit Room(std::size_t size, unsigned char filling = Allocations::Filling());

    unsigned char* data() { return bytes_.data(); }
    std::size_t size() const { return size_; }
    std::span<const unsigned char> Bytes() const { return std::span(bytes_).first(size_); }
    unsigned char Filling() const { return filling_; }
    bool IsOverrun() const;

  private:
    std::vector<unsigned char> bytes_;
    std::size_t size_;
    unsigned char filling_;
};

class Run {
  public:
    Run(MemoryFileSystem& memory, FaultyFileSystem& files) : memory_(memory), files_(files) {}

    /// A step: asks the library for something. `work` gives its result, of which 0 tells a failure.
    template <typename Work>
    std::uint64_t Do(const char* name, const May& may, Work work)
    {
        Begin(name);
        std::uint64_t result = 0;
        auto body = [&] { result = static_cast<std::uint64_t>(work()); };
        unsigned thrown = kNothing;
        {
            const AllocationsArmed armed;
            thrown =
                ThrownBy([](void* context) { (*static_cast<decltype(body)*>(context))(); }, &body);
        }
        End(result, thrown, may);
        return result;
    }
    /// A step that draws on a small bitmap.
    template <typename Work>
    void Draw(const char* name, const May& may, Work work)
    {
        Canvas canvas(kSide, kSide);
        Do(name, may, [&] { return work(canvas.dc), 1; });
        FoldPixels(canvas.dc);
    }
    /// Adds what the last step says that it gave, the first bytes of a `Room`; and where it gave all,
    /// that it left the rest alone.
    void FoldGiven(const Room& room, std::uint64_t given);
    /// Adds the upper left of a bitmap; nothing of null.
    void FoldBitmap(HBITMAP bitmap);
    /// Adds to what the last step gave.
    void Fold(std::span<const unsigned char> bytes);
    void Fold(std::uint64_t number);
    void Fold(double number);
    /// The last step shows what earlier steps left: what they told counts for it, too.
    void StandsOnEarlier();
    /// A file as it stands now; one that isn't there or is empty tells that it failed.
    void LookAt(const char* name, const char* path);
    /// The same for a file that is whole or empty after a failure of the files, whatever earlier
    /// steps told, unless nothing can be done to them any more.
    void LookAtWholeOrEmpty(const char* name, const char* path);

    /// Whether the last step told a failure.
    bool Told() const { return outcome_.steps[outcome_.count - 1].tells; }

    /// The object whose codes the steps leave; null for none.
    void Subject(BasePictureIF* picture) { subject_ = picture; }
    /// From here on nothing fails, and the files are good again.
    void Recover();
    bool HasRecovered() const { return recovered_ != kNever; }

    /// Steps from this number on ran without a fault.
    std::size_t Recovered() const { return recovered_; }
    const Outcome& Gave() const { return outcome_; }
    MemoryFileSystem& Memory() { return memory_; }
    void GoodFiles(const std::vector<std::pair<std::string, Bytes>>& files) { good_ = &files; }

  private:
    static constexpr int kSide = 12;
    static constexpr std::size_t kNever = ~std::size_t{ 0 };

    void Begin(const char* name);
    void End(std::uint64_t result, unsigned thrown, const May& may);
    void FoldPixels(CDC& dc);
    Step& Last() { return outcome_.steps[outcome_.count - 1]; }

    MemoryFileSystem& memory_;
    FaultyFileSystem& files_;
    const std::vector<std::pair<std::string, Bytes>>* good_ = nullptr;
    BasePictureIF* subject_ = nullptr;
    Outcome outcome_;
    std::size_t recovered_ = kNever;
};

} // namespace tympan::test
