#include "faults/campaigns.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace tympan::test {

namespace {

constexpr unsigned char kFilling = 0x5A, kOtherFilling = 0xC3;

constexpr char kNoFault[] = "as it is";

constexpr std::pair<FileFault, const char*> kFileFaults[] = {
    { FileFault::error, "error" },
    { FileFault::noSpace, "no space" },
    { FileFault::ended, "end of file" },
    { FileFault::oneByte, "one byte" },
};

const char* Onwards(bool onwards)
{
    return onwards ? " and all behind" : "";
}

// Texts that a number or a name of a header can have, made as wide as the field.
std::vector<std::string> TextValues(std::size_t width)
{
    std::vector<std::string> values;
    for (const char* text : { "",
                              " ",
                              "0",
                              "1",
                              "-1",
                              "+",
                              "-.10000000E+01",
                              "+.00000000E+00",
                              "+.10000000E-40",
                              "+.99999999E+99",
                              "+99999999999",
                              "+00000065536",
                              "4294967295",
                              "2147483648",
                              "nan",
                              "inf",
                              "1e309",
                              "0x10",
                              "CT",
                              "LW",
                              "PG",
                              "LWCT" }) {
        values.emplace_back(text);
        values.back().resize(width, '\0');
        values.emplace_back(text);
        values.back().resize(width, ' ');
    }
    return values;
}

std::vector<std::string> NumberValues(std::size_t width)
{
    std::vector<std::string> values;
    for (const std::uint32_t number :
         { 0U,    1U,     2U,     3U,          4U,          5U,          7U,         8U,
           12U,   13U,    14U,    127U,        128U,        255U,        256U,       4095U,
           4096U, 65535U, 65536U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU }) {
        std::string value;
        for (std::size_t i = 0; i < width; ++i)
            value += static_cast<char>(number >> (8 * i));
        values.push_back(value);
    }
    return values;
}

std::vector<std::string> PathValues(std::size_t width)
{
    std::vector<std::string> values;
    for (const char* text : { "", " ", ".", "/", "missing.ct", "pic.page", "picture.lw" }) {
        values.emplace_back(text);
        values.back().resize(width, '\0');
    }
    values.emplace_back(width, 'x');
    return values;
}

std::vector<std::string> RunValues()
{
    using namespace std::string_literals;
    return { "\0\0"s, "\0\1"s, "\1\0"s, "\1\377"s, "\377\377"s, "\377\1"s, "\2\1"s, "\3\5"s };
}

std::vector<std::string> ValuesOf(const Field& field)
{
    switch (field.kind) {
    case FieldKind::text: return TextValues(field.width);
    case FieldKind::path: return PathValues(field.width);
    case FieldKind::run: return RunValues();
    default: return NumberValues(field.width);
    }
}

std::vector<unsigned> ByteValues(unsigned was, Extent extent)
{
    std::vector<unsigned> values;
    if (extent == Extent::full)
        for (unsigned value = 0; value < 256; ++value)
            values.push_back(value);
    else
        values = { 0, 1, 0x7F, 0x80, 0xFF, '0', ' ', '9', was ^ 1U };
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    values.erase(std::remove(values.begin(), values.end(), was), values.end());
    return values;
}

bool Contains(const std::vector<std::string_view>& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The first step in which two outcomes differ; null where they don't.
const char* Difference(const Outcome& one, const Outcome& other)
{
    const std::size_t end = std::min(one.count, other.count);
    for (std::size_t i = 0; i < end; ++i)
        if (one.steps[i].digest != other.steps[i].digest)
            return one.steps[i].name;
    return one.count == other.count ? nullptr : "the last";
}

// The step of a name, of the wanted part of a sound outcome.
const Step* Find(const Outcome& sound, std::size_t first, std::size_t end, const char* name,
                 std::size_t occurrence)
{
    for (std::size_t i = first; i < end; ++i)
        if (std::string_view(sound.steps[i].name) == name && occurrence-- == 0)
            return &sound.steps[i];
    return nullptr;
}

// How many steps of a step's name stand before it, from `first` on.
std::size_t Occurrence(const Outcome& outcome, std::size_t first, std::size_t step)
{
    std::size_t count = 0;
    for (std::size_t i = first; i < step; ++i)
        count += std::string_view(outcome.steps[i].name) == outcome.steps[step].name ? 1U : 0U;
    return count;
}

// Whether a step is one of a sound outcome: what is asked once more, since an opening failed, has no
// place of its own in it.
bool IsAmong(const Outcome& sound, const Step& step)
{
    return std::any_of(
        sound.steps.begin(), sound.steps.begin() + static_cast<std::ptrdiff_t>(sound.count),
        [&](const Step& one) {
            return std::string_view(one.name) == step.name && one.digest == step.digest;
        });
}

} // namespace

Campaigns::Campaigns(const Scenario& scenario, Extent extent, Held held)
    : scenario_(scenario), extent_(extent), held_(held)
{
    PlayOnce({}, kFilling); // what the process makes once and keeps
    sound_ = PlayOnce({}, kFilling);
    Try(kNoFault, {}, Tells::byCode, "no fault");
    for (std::size_t i = 0; i < sound_.outcome.count; ++i)
        if (sound_.outcome.steps[i].tells) {
            ++tallies_[kNoFault].failed;
            story_ +=
                scenario_.name + ": the sound step " + sound_.outcome.steps[i].name + " fails\n";
        }
}

Campaigns::Played Campaigns::PlayOnce(const Fault& fault, unsigned char filling) const
{
    Played played;
    const std::size_t before = Allocations::LiveCount();
    {
        MemoryFileSystem memory;
        for (const auto& [path, bytes] : scenario_.files)
            memory.Put(path, bytes);
        if (fault.changed != nullptr)
            memory.Put(scenario_.files[fault.changedFile].first, *fault.changed);
        FaultyFileSystem files(memory, fault.files);
        const ScopedFileSystem scoped(files);
        Run run(memory, files);
        run.GoodFiles(scenario_.files);
        Allocations::Plan(fault.allocation, fault.allocationsOnwards, filling);
        scenario_.play(run);
        played.happened = files.HasFailed() || Allocations::HasFailed() || fault.changed != nullptr;
        played.outputFailed = files.HasOutputFailed();
        played.outcome = run.Gave();
        played.recovered = run.Recovered();
        played.openFiles = memory.OpenCount();
        played.peakBytes = Allocations::PeakBytes();
    }
    Allocations::Plan(0, false, kFilling);
    played.leaked = Allocations::LiveCount() - before;
    return played;
}

std::string Campaigns::WrongCode(const Played& played)
{
    const Outcome& outcome = played.outcome;
    if (outcome.overran != nullptr)
        return std::string("step ") + outcome.overran + " writes behind its room";
    if (outcome.strange == nullptr)
        return {};
    const std::string step = std::string("step ") + outcome.strange;
    return outcome.thrown != kNothing ? step + " throws kind " + std::to_string(outcome.thrown)
                                      : step + " leaves " + std::to_string(outcome.left);
}

// Before the recovery a step gives what it gives without a fault, or tells a failure; behind it
// only the first will do.
std::string Campaigns::WrongSteps(const Played& played, Tells tells) const
{
    const Outcome& outcome = played.outcome;
    for (std::size_t i = 0; i < outcome.count; ++i) {
        const Step& step = outcome.steps[i];
        const bool isBehind = i >= played.recovered;
        if (tells == Tells::byCode && step.isMute)
            return std::string("step ") + step.name + " fails and leaves no code";
        const bool isGentle = tells == Tells::perhaps ||
                              (tells == Tells::byResult && Contains(scenario_.gentle, step.name));
        if (!isBehind && (isGentle || step.tells))
            continue;
        const std::size_t first = isBehind ? played.recovered : 0;
        const std::size_t occurrence = Occurrence(outcome, first, i);
        const Outcome& sound = sound_.outcome;
        const Step* same = isBehind
                               ? Find(sound, sound_.recovered, sound.count, step.name, occurrence)
                               : Find(sound, 0, sound_.recovered, step.name, occurrence);
        const bool isInPlace = same != nullptr && same->digest == step.digest;
        if (!isInPlace && ((isBehind && same != nullptr) || !IsAmong(sound, step)))
            return std::string("step ") + step.name +
                   (isBehind ? " behind the fault gives something else"
                             : " gives something else and doesn't tell");
    }
    return {};
}

std::size_t Campaigns::MostBytes() const
{
    std::size_t files = 0;
    for (const auto& [path, bytes] : scenario_.files)
        files += bytes.size();
    return held_.Most(files);
}

std::string Campaigns::Wrong(const Played& played, const Played& again, Tells tells) const
{
    if (played.openFiles != 0)
        return "files stay open";
    if (again.leaked != 0) // what the process makes once and keeps, the first playing made
        return "allocations stay: " + std::to_string(static_cast<std::ptrdiff_t>(again.leaked));
    if (played.peakBytes > MostBytes())
        return "memory held: " + std::to_string(played.peakBytes);
    if (const char* const step = Difference(played.outcome, again.outcome))
        return std::string("step ") + step + " shows what memory held before";
    const auto* const steps = played.outcome.steps.data();
    if (played.outputFailed &&
        std::none_of(steps, steps + std::min(played.recovered, played.outcome.count),
                     [](const Step& step) { return step.tells; }))
        return "no step tells that an output failed";
    const std::string code = WrongCode(played);
    return code.empty() ? WrongSteps(played, tells) : code;
}

bool Campaigns::Try(const char* campaign, const Fault& fault, Tells tells, std::string about)
{
    constexpr std::size_t kStories = 200;
    constexpr std::size_t kFollowedChanges = 8; // a changed file has a recovery of its own, too
    const Played played = PlayOnce(fault, kFilling);
    const Played again = PlayOnce(fault, kOtherFilling);
    Tally& tally = tallies_[campaign];
    if (!played.happened && std::string_view(campaign) != kNoFault)
        return false;
    ++tally.cases;
    std::string wrong = Wrong(played, again, tells);
    const bool isFollowed = tells == Tells::byCode || tally.cases % kFollowedChanges == 0;
    if (wrong.empty() && isFollowed &&
        Difference(PlayOnce({}, kFilling).outcome, sound_.outcome) != nullptr)
        wrong = "the next playing differs";
    if (wrong.empty())
        return true;
    if (++tally.failed <= kStories)
        story_ += scenario_.name + ", " + campaign + ", " + about + ": " + wrong + '\n';
    return true;
}

void Campaigns::FailFiles()
{
    for (const auto& [fault, name] : kFileFaults)
        for (const bool onwards : { false, true }) {
            const bool isError = fault == FileFault::error || fault == FileFault::noSpace;
            const std::size_t most = isError ? 1 : 40; // operations in a row that can't fail so
            std::size_t unmet = 0;
            for (std::size_t number = 1; unmet < most; ++number) {
                const bool met = Try("file operations", { .files = { fault, number, onwards } },
                                     isError ? Tells::byCode : Tells::perhaps,
                                     std::string(name) + " at operation " + std::to_string(number) +
                                         Onwards(onwards));
                unmet = met ? 0 : unmet + 1;
            }
        }
}

void Campaigns::FailAllocations()
{
    for (const bool onwards : { false, true })
        for (std::size_t number = 1;
             Try("allocations", { .allocation = number, .allocationsOnwards = onwards },
                 Tells::byCode, "allocation " + std::to_string(number) + Onwards(onwards));
             ++number) {
        }
}

void Campaigns::TryChanged(const char* campaign, std::size_t file, const Bytes& bytes,
                           std::string about, Tells tells)
{
    Try(campaign, { .changedFile = file, .changed = &bytes }, tells,
        scenario_.files[file].first + ' ' + std::move(about));
}

void Campaigns::CutFiles()
{
    for (std::size_t file = 0; file < scenario_.files.size(); ++file) {
        const Bytes& whole = scenario_.files[file].second;
        const std::size_t head =
            file < scenario_.heads.size() ? scenario_.heads[file] : whole.size();
        for (std::size_t length = 0; length < whole.size(); ++length)
            TryChanged("cuts", file,
                       Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)),
                       "cut to " + std::to_string(length),
                       length < head ? Tells::perhaps : Tells::byResult);
    }
}

void Campaigns::ChangeBytes()
{
    for (std::size_t file = 0; file < scenario_.files.size(); ++file) {
        Bytes bytes = scenario_.files[file].second;
        const std::size_t end =
            file < scenario_.changedBytes.size() ? scenario_.changedBytes[file] : bytes.size();
        for (std::size_t at = 0; at < end; ++at)
            ChangeByte(file, bytes, at);
    }
}

void Campaigns::ChangeByte(std::size_t file, Bytes& bytes, std::size_t at)
{
    const std::byte was = bytes[at];
    for (const unsigned value : ByteValues(std::to_integer<unsigned>(was), extent_)) {
        bytes[at] = static_cast<std::byte>(value);
        TryChanged("bytes", file, bytes,
                   "byte " + std::to_string(at) + " is " + std::to_string(value));
    }
    bytes[at] = was;
}

void Campaigns::ChangeFields()
{
    for (const Field& field : scenario_.fields)
        for (const std::string& value : ValuesOf(field)) {
            Bytes bytes = scenario_.files[field.file].second;
            std::memcpy(bytes.data() + field.at, value.data(),
                        std::min({ value.size(), field.width, bytes.size() - field.at }));
            TryChanged("fields", field.file, bytes,
                       "field at " + std::to_string(field.at) + " is \"" + value + '"');
        }
}

} // namespace tympan::test
