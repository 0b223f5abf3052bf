// Calls of libjpeg, and what it has to say. Its own handlers print and end the program.
#pragma once

#include "failure.h"
#include "jump_guard.h"

#include <jpeglib.h>

#include <array>
#include <csetjmp>
#include <cstdio> // which jpeglib.h needs
#include <exception>
#include <string>
#include <utility>

namespace tympan::tool {

/// The messages of the objects of libjpeg that have its `Manager` as their `err`.
class JpegMessages {
  public:
    JpegMessages();
    JpegMessages(const JpegMessages&) = delete;
    JpegMessages& operator=(const JpegMessages&) = delete;

    jpeg_error_mgr* Manager() { return &manager_; }

    /// Makes calls of libjpeg, in a frame whose objects need no destructor.
    /// \return false when one failed, which `Text` tells. What was thrown in `CallBack` is thrown.
    template <typename Calls>
    bool Do(const Calls& calls)
    {
        if (ComesBack(jump_, calls))
            return true;
        if (thrown_)
            std::rethrow_exception(std::exchange(thrown_, nullptr));
        return false;
    }

    /// The text and the code of the failure that ended `Do`.
    const char* Text() const { return text_.data(); }
    int Code() const { return manager_.msg_code; }

    /// Does what libjpeg calls back for. It may throw, which ends the calls.
    template <typename Work>
    static void CallBack(j_common_ptr jpeg, const Work& work)
    {
        if (!Of(jpeg).IsDone(work))
            Jump(jpeg);
    }

  private:
    template <typename Work>
    bool IsDone(const Work& work) noexcept
    {
        try {
            work();
            return true;
        } catch (...) {
            thrown_ = std::current_exception();
            return false;
        }
    }

    static JpegMessages& Of(j_common_ptr jpeg);
    [[noreturn]] static void Jump(j_common_ptr jpeg);
    [[noreturn]] static void Fail(j_common_ptr jpeg);
    static void Tell(j_common_ptr jpeg, int level);

    jpeg_error_mgr manager_{}; // first, for libjpeg hands out its address
    std::jmp_buf jump_{};
    std::array<char, JMSG_LENGTH_MAX> text_{};
    std::exception_ptr thrown_;
};

/// An object of libjpeg that reads. It is created by the first call that it is given to.
struct JpegDecoder : jpeg_decompress_struct {
    JpegDecoder() : jpeg_decompress_struct{} {}
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;
    ~JpegDecoder() { jpeg_destroy_decompress(this); }
};

/// The same, writing.
struct JpegEncoder : jpeg_compress_struct {
    JpegEncoder() : jpeg_compress_struct{} {}
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;
    ~JpegEncoder() { jpeg_destroy_compress(this); }
};

/// The failure to throw for a file whose reading `messages` has ended.
FileFailure UnreadableJpeg(const std::string& path, const JpegMessages& messages);

/// Refuses to hold the coefficients of a picture, whose head was read, when they are more than a
/// file of this length can fill.
/// \throws FileFailure
void RequireHeldCoefficients(const std::string& path, const jpeg_decompress_struct& jpeg);

} // namespace tympan::tool
