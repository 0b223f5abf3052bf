// What a failed operation leaves behind in an object or record: a code and, in objects, a text.
#pragma once

#include "platform/text.h"

namespace tympan {

struct FailureRow;

/// Code and text of the last failure. Nothing sets the code back to 0.
class FailureTrace {
  public:
    FailureTrace() = default;
    /// The code is 0, and the text that of an object that hasn't failed.
    explicit FailureTrace(const char* text) : text_(text) {}

    /// @{
    /// The code.
    unsigned long Status() const { return status_; }
    void Status(unsigned long status) { status_ = status; }
    /// @}
    /// @{
    /// The text; the reference holds as long as the trace.
    const CString& Text() const { return text_; }
    void Text(const CString& text) { text_ = text; }
    /// @}

    /// Takes over what a row of a failure table leaves: the code first, then the text if there is
    /// one. Out of memory for the text, the old text stays.
    void Leave(const FailureRow& row) noexcept;

  private:
    unsigned long status_ = 0;
    CString text_;
};

} // namespace tympan
