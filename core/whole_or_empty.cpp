#include "core/whole_or_empty.h"

#include "core/failure_guard.h"

namespace tympan {

WholeOrEmpty::~WholeOrEmpty()
{
    static constexpr FailureRow kAnyFailure[] = { { Caught::Anything, 0, nullptr } };
    if (isWhole_)
        return;
    const bool isCut = Guarded(NoTrace(), kAnyFailure, [&] {
        file_.SetLength(0);
        file_.Close();
    });
    if (!isCut) // as where it was the closing that failed
        Guarded(NoTrace(), kAnyFailure, [&] {
            file_.Open(name_, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
            file_.Close();
        });
}

} // namespace tympan
