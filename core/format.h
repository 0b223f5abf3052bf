// A format as the factory knows it: a row of the list that `formats.cpp` holds.
#pragma once

#include "core/check_rule.h"
#include "core/picture_object.h"

#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace tympan {

class Findings;

/// How files of a format are checked, on the format's own reader.
struct FormatCheck {
    /// Whether a file is to be checked as one of the format: it looks like one, and what the check
    /// would tell is of use. A damaged file may be accepted that the format doesn't recognise.
    bool (*accepts)(CFile& file, const CString& fileName) = nullptr;
    /// Tells what is wrong with a file, whatever it looks like, to the end of what can be read.
    /// \throws CFileException* when the file can't be read; std::bad_alloc.
    void (*prove)(CFile& file, Findings& findings) = nullptr;
    /// All rules of the format, those of its check and retired ones, in the order of their numbers.
    std::span<const CheckRule* const> rules;
};

struct Format {
    /// As people know it, such as "CT".
    std::string_view name;
    /// Whether a file looks like one of the format's. Seeks and reads, and changes nothing else.
    /// The name is the one that the client gave.
    bool (*recognises)(CFile& file, const CString& fileName);
    /// A new object of the format, not opened.
    std::unique_ptr<BasePictureIF> (*make)();
    FormatCheck check;
    /// Whether `recognises` looks at so little that files of other formats may pass it. Who isn't bound
    /// to the order of the list asks such a format last.
    bool recognisesMuch = false;
    /// What the common header has for the type of the format's files, where that isn't the name.
    std::string_view typeLetters = {};
    /// From the resolutions in the record of one of the format's objects to pixels per inch; nothing for
    /// another format's object. Null where the file has them per inch.
    std::optional<double> (*perInch)(const BasePictureIF& picture) = nullptr;
};

/// The formats in the order in which a path is asked for them.
std::span<const Format> Formats();
/// The same, with those that recognise much behind the others.
std::span<const Format* const> FormatsByCertainty();

} // namespace tympan
