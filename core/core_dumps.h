// SPDX-License-Identifier: GPL-3.0-or-later
// Turns core dumps off for the whole process at start-up: the site password
// and the encoded password live in its memory, and a core file would write
// them to disk for anyone who can read the folder it lands in.
#pragma once

#include <sys/resource.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

namespace lw::core {

// No core file, however the process ends; on Linux also no ptrace attach by
// another process of the same user and no readable /proc memory. True when
// both took hold.
inline bool TurnOffCoreDumps() {
    const rlimit none{0, 0};
    bool done = setrlimit(RLIMIT_CORE, &none) == 0;
#if defined(__linux__)
    done = prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && done;
#endif
    return done;
}

}  // namespace lw::core
