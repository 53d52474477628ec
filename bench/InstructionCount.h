#pragma once

// Counting instructions only over the steps a benchmark times, each dumped apart, when it runs
// under valgrind --tool=callgrind --instr-atstart=no; nothing at all outside callgrind.

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define QUILLON_CALLGRIND 1
#endif

inline void countFrom()
{
#ifdef QUILLON_CALLGRIND
    CALLGRIND_ZERO_STATS;
    CALLGRIND_START_INSTRUMENTATION;
#endif
}

inline void countUntil(const char *step)
{
#ifdef QUILLON_CALLGRIND
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(step);
#else
    (void)step;
#endif
}
