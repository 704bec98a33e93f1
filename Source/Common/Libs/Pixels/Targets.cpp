// What Highway's headers need at run time: which instruction sets the processor has. Its shared library tells too, but
// measures the clock for some milliseconds whenever a program starts.
#include <hwy/targets.h>

namespace hwy
{

int64_t SupportedTargets()
{
    int64_t targets = HWY_STATIC_TARGET;
#if HWY_ARCH_X86
    if (__builtin_cpu_supports("ssse3"))
        targets |= HWY_SSSE3;
    if (__builtin_cpu_supports("sse4.2"))
        targets |= HWY_SSE4;
    if (__builtin_cpu_supports("avx2"))
        targets |= HWY_AVX2;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw"))
        targets |= HWY_AVX3;
#endif
    return targets;
}

ChosenTarget& GetChosenTarget()
{
    static ChosenTarget chosen;
    return chosen;
}

} // namespace hwy
