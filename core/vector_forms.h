// Which vector forms of a function the processor that runs this has.
#pragma once

#include <cstddef>
#include <span>

namespace tympan {

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)

/// Those of two forms, the first for AVX2 and the second for SSSE3, that the processor has.
template <typename Form>
std::span<const Form> FormsOfProcessor(const Form (&avx2AndSsse3)[2])
{
    std::size_t first = std::size(avx2AndSsse3);
    if (__builtin_cpu_supports("avx2"))
        first = 0;
    else if (__builtin_cpu_supports("ssse3"))
        first = 1;
    return std::span<const Form>(avx2AndSsse3).subspan(first);
}

#endif

} // namespace tympan
