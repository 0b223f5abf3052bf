// Cuts the paths that prepress files carry in them.
#pragma once

#include "platform/export.h"
#include "platform/text.h"

/// Static operations on paths whose separator is the backslash only. The result comes second; it
/// may be the same text as the path. When an operation fails inside, the result is emptied and the
/// operation's own class is thrown by value.
class TYMPAN_API FileNameParser {
  public:
    class TYMPAN_API StripPathFailed {};      ///< `StripPath` failed
    class TYMPAN_API StripFileNameFailed {};  ///< `StripFileName` failed
    class TYMPAN_API StripExtensionFailed {}; ///< `StripExtension` failed

    /// What stands behind the last backslash; empty without one. \throws StripPathFailed.
    static void StripPath(const CString& path, CString& result);
    /// What stands up to the last backslash, and it; empty without one.
    /// \throws StripFileNameFailed.
    static void StripFileName(const CString& path, CString& result);
    /// What stands before the last point, wherever in the path that is; all of it without one.
    /// \throws StripExtensionFailed.
    static void StripExtension(const CString& path, CString& result);
};
