// A file in the making of which no part may pass for the whole.
#pragma once

#include "platform/file.h"

namespace tympan {

/// Empties a file and closes it when it goes, unless the file was said to be whole. Throws nothing: a
/// file that can't be emptied stays as it is.
class WholeOrEmpty {
  public:
    /// \param file open for writing, by `name`
    WholeOrEmpty(CFile& file, const CString& name) : file_(file), name_(name) {}
    WholeOrEmpty(const WholeOrEmpty&) = delete;
    WholeOrEmpty& operator=(const WholeOrEmpty&) = delete;
    ~WholeOrEmpty();

    void IsWhole() { isWhole_ = true; }

  private:
    CFile& file_;
    const CString& name_;
    bool isWhole_ = false;
};

} // namespace tympan
