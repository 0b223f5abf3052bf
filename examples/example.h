// What the examples share: failures that end in a message and a status, and the opening of a picture.
#pragma once

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <array>
#include <charconv>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace example {

/// A failure as a sentence about a file.
inline std::runtime_error Failure(const std::string& path, const std::string& what)
{
    return std::runtime_error(path + ": " + what);
}

/// A failure that has left a code in the object, and perhaps a text, or a code in the object's record.
inline std::runtime_error FailureOf(const BasePictureIF& picture, const std::string& path,
                                    const std::string& what)
{
    constexpr const char* kNoText = "BasePictureIF:\n No Error !"; // of an object without a failure
    const PictureParameters* const record = picture.PictureParams();
    unsigned long code = picture.TraceStatus();
    if (code == 0 && record != nullptr)
        code = record->TraceStatus();
    std::string all = what;
    if (code != 0)
        all += " (code " + std::to_string(code) + ")";
    if (code != 0 && picture.ErrorMsg().Compare(kNoText) != 0)
        all += std::string("\n") + picture.ErrorMsg().GetString();
    return Failure(path, all);
}

/// Opens a file of the class asked for, whatever its name.
template <typename Picture>
std::unique_ptr<Picture> Open(const std::string& path)
{
    tympan::OpenedPicture opened = tympan::OpenAnyPicture(path.c_str());
    if (opened.picture == nullptr)
        throw Failure(path, "is of no format that the library knows");
    if (!opened.isOpen)
        throw FailureOf(*opened.picture, path, "can't be opened");
    auto* const picture = dynamic_cast<Picture*>(opened.picture.get());
    if (picture == nullptr)
        throw Failure(path, "is of another format: " + std::string(opened.format));
    static_cast<void>(opened.picture.release()); // the same object, from here on by its own class
    return std::unique_ptr<Picture>(picture);
}

/// The separation of a name such as "black".
inline ColorSeparationType SeparationNamed(const std::string& name)
{
    constexpr std::array kNames{ "cyan", "magenta", "yellow", "black" };
    for (unsigned int i = 0; i < kNames.size(); ++i)
        if (name == kNames[i])
            return BasePictureIF::AvailableSeps(i);
    throw std::runtime_error("no separation is named " + name);
}

/// The whole number that a text is, from 0 on.
inline unsigned int NumberIn(const std::string& text)
{
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end)
        throw std::runtime_error("no whole number: " + text);
    return number;
}

/// Ends a failure of the platform's kind, as `delete` does others.
struct EndFailure {
    void operator()(CException* thrown) const { thrown->Delete(); }
};

inline std::string TextOf(const CException& failure)
{
    std::array<char, 300> text{};
    failure.GetErrorMessage(text.data(), text.size());
    return text.data();
}

inline int Tell(const std::string& failure)
{
    std::cerr << failure << '\n';
    return 1;
}

/// The exit status of some work: 0, or 1 once its failure has been told. What the library throws as a
/// pointer is owned by who catches it.
template <typename Work>
int StatusOf(Work&& work)
{
    try {
        work();
        return 0;
    } catch (CException* thrown) {
        const std::unique_ptr<CException, EndFailure> owned(thrown);
        return Tell(TextOf(*owned));
    } catch (LumetoException* thrown) {
        const std::unique_ptr<LumetoException> owned(thrown);
        return Tell(owned->MessageText().GetString());
    } catch (MemoryAllocException* thrown) {
        const std::unique_ptr<MemoryAllocException> owned(thrown);
        return Tell(owned->Text().GetString());
    } catch (const std::exception& failure) {
        return Tell(failure.what());
    }
}

using Arguments = std::vector<std::string>;

/// Runs an example with the arguments that `names` lists; with others it tells them, and the status is 2.
template <typename Work>
int Run(int count, char** words, std::initializer_list<const char*> names, Work&& work)
{
    const Arguments arguments(words + 1, words + count);
    if (arguments.size() == names.size())
        return StatusOf([&] { work(arguments); });
    std::cerr << "Usage: " << words[0];
    for (const char* name : names)
        std::cerr << ' ' << name;
    std::cerr << '\n';
    return 2;
}

} // namespace example
