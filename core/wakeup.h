// SPDX-License-Identifier: GPL-3.0-or-later
// A wake-up call to a thread that waits: Notify, from any thread or from a
// signal handler, makes the present or the next wait return. It keeps no
// count: any number of calls before a wait wake it once. Its descriptor is
// readable while a call is pending, so that an event loop can watch it
// beside its own sources. Waiting on it costs no processor time.
#pragma once

namespace lw::core {

class Wakeup {
public:
    // Throws std::system_error when the system has no descriptor to spare.
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    // Safe from any thread and from a signal handler.
    void Notify();
    // Blocks until a call is pending, then takes it.
    void Wait();
    // Takes a pending call, if any, without waiting.
    void Clear();
    int Descriptor() const { return m_fd; }

private:
    int m_fd = -1;
};

}  // namespace lw::core
