#include "manifest.h"

#include "failure.h"
#include "names.h"
#include "output_file.h"

#include <tympan/tympan.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace tympan::tool {

namespace {

constexpr char kPartial[] = ".partial";
constexpr char kVersionKey[] = "tympan_manifest";
constexpr int kVersion = 1;
constexpr std::array kOutcomeKeys{ "verdict", "format", "findings_total", "counts", "policy" };

Json CopyOf(const Json& from, Json to)
{
    for (const char* const key : kOutcomeKeys)
        if (const auto found = from.find(key); found != from.end())
            to[key] = *found;
    return to;
}

Json AsJson(const FileState& state)
{
    return { { "size", state.size }, { "mtime_ns", state.mtimeNs } };
}

FileState StateFrom(const Json& object)
{
    return { object.at("size").get<std::uint64_t>(), object.at("mtime_ns").get<std::int64_t>() };
}

Json AsJson(const ManifestLine& line)
{
    Json object;
    AddPath(object, "path", line.path);
    object.update(AsJson(line.state));
    object["side_file"] = line.sideFile ? AsJson(*line.sideFile) : Json(nullptr);
    object["sha256"] = line.sha256.empty() ? Json(nullptr) : Json(line.sha256);
    return CopyOf(line.outcome, std::move(object));
}

// What `PercentEncoded` made.
std::string PercentDecoded(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && text.size() - i > 2 &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            bytes += static_cast<char>(byte);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::string PathIn(const Json& object)
{
    const auto raw = object.find("path_raw");
    return raw != object.end() ? PercentDecoded(raw->get<std::string>())
                               : object.at("path").get<std::string>();
}

// Nothing when it isn't one: a run that was killed may have torn its last line.
std::optional<ManifestLine> LineOf(const std::string& text)
try {
    const Json object = ParsedJson(text);
    if (!object.at("verdict").is_string() || !object.at("counts").is_object())
        return std::nullopt;
    const Json& side = object.at("side_file");
    const Json& sum = object.at("sha256");
    return ManifestLine{ PathIn(object), StateFrom(object),
                         side.is_null() ? std::nullopt : std::optional(StateFrom(side)),
                         sum.is_null() ? std::string() : sum.get<std::string>(),
                         OutcomeOf(object) };
} catch (const Json::exception&) {
    return std::nullopt;
}

// Null when it isn't JSON.
Json HeadOf(const std::string& text)
try {
    return ParsedJson(text);
} catch (const Json::parse_error&) {
    return nullptr;
}

void RequirePlainFile(const std::string& path)
{
    struct stat there {};
    if (IsDash(path))
        throw UsageFailure("-: a manifest can't go to standard output; give the name of a file");
    if (stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode))
        throw FileFailure(path, "is no plain file, and a manifest would take its place");
}

} // namespace

Json OutcomeOf(const Json& told)
{
    return CopyOf(told, Json::object());
}

Json ManifestHead(const std::string& asFormat, const std::string& policySum)
{
    return { { kVersionKey, kVersion },
             { "tympan", Version() },
             { "as", asFormat.empty() ? Json(nullptr) : Json(asFormat) },
             { "policy_sha256", policySum.empty() ? Json(nullptr) : Json(policySum) } };
}

ManifestWriter::ManifestWriter(const std::string& path, const Json& head) : path_(path)
{
    RequirePlainFile(path);
    Open();
    Put(head);
}

// An earlier run's is left alone: it may be what this one goes by.
void ManifestWriter::Open()
{
    constexpr mode_t kMode = 0666;
    for (int number = 1; file_ < 0; ++number) {
        writingPath_ = path_ + kPartial + (number == 1 ? "" : std::to_string(number));
        file_ = open(writingPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (file_ < 0 && errno != EEXIST)
            throw SystemFailure(path_, errno);
    }
}

ManifestWriter::~ManifestWriter()
{
    if (file_ >= 0)
        close(file_);
}

void ManifestWriter::Write(const ManifestLine& line)
{
    Put(AsJson(line));
}

void ManifestWriter::Put(const Json& line)
{
    const std::string text = OnOneLine(line) + '\n';
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(file_, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR)
            throw SystemFailure(path_, errno);
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

void ManifestWriter::Commit()
{
    const bool isOnDisk = fsync(file_) == 0;
    const bool isClosed = close(std::exchange(file_, -1)) == 0;
    if (!isOnDisk || !isClosed || std::rename(writingPath_.c_str(), path_.c_str()) != 0)
        throw SystemFailure(path_, errno);
}

bool IsPartialOf(const std::string& partial, const std::string& manifest)
{
    const std::string start = manifest + kPartial;
    return partial.starts_with(start) &&
           partial.find_first_not_of("0123456789", start.size()) == std::string::npos;
}

ManifestReader::ManifestReader(const std::string& path) : path_(path), file_(path)
{
    std::string first;
    if (!file_)
        throw SystemFailure(path, errno);
    std::getline(file_, first);
    head_ = HeadOf(first);
    if (!head_.is_object() || head_.value(kVersionKey, Json()) != kVersion)
        throw UsageFailure(path + ": isn't a manifest that this version reads");
    Advance();
}

void ManifestReader::Advance()
{
    current_.reset();
    for (std::string text; !current_ && std::getline(file_, text);)
        current_ = LineOf(text);
}

const ManifestLine* ManifestReader::Find(std::string_view path)
{
    while (current_ && IsBefore(current_->path, path))
        Advance();
    return current_ && current_->path == path ? &*current_ : nullptr;
}

} // namespace tympan::tool
